#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace hs {
namespace test {

/// The shared sample corpus (../shared/corpus beside the checkout, or HANDSET_CORPUS_DIR); empty
/// when it is not there, and tests that need it skip.
std::string CorpusDir();
/// Files of the corpus folder `sub` ("mid", "amr", ...), sorted; empty when absent.
std::vector<std::string> CorpusFiles(const std::string& sub);
std::vector<uint8_t> ReadBytes(const std::string& path);
/// A fresh empty folder under the system temporary folder.
std::string MakeTempDir(const std::string& tag);
/// Runs a shell command; returns its exit status and fills `out` with its standard output.
int RunCommand(const std::string& cmd, std::string* out);
/// Path of the built CLI.
std::string CliPath();
/// True when `/usr/bin/python3 -c "import MODULE"` works.
bool HavePythonModule(const std::string& module);
/// True when `tool` is on PATH.
bool HaveTool(const std::string& tool);

}  // namespace test
}  // namespace hs

#define HS_SKIP_WITHOUT_CORPUS()                                                          \
  do {                                                                                    \
    if (hs::test::CorpusDir().empty())                                                    \
      GTEST_SKIP() << "sample corpus not found (../shared/corpus or HANDSET_CORPUS_DIR)"; \
  } while (0)
