#include "tests/TestUtil.h"

#include <sys/wait.h>
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include <random>
#include "platform/Os.h"

namespace fs = std::filesystem;

namespace hs {
namespace test {

std::string CorpusDir() {
  if (const char* env = std::getenv("HANDSET_CORPUS_DIR"))
    if (*env && fs::is_directory(env)) return env;
  fs::path p = fs::path(HANDSET_SOURCE_DIR).parent_path() / "shared" / "corpus";
  std::error_code ec;
  return fs::is_directory(p, ec) ? p.string() : std::string();
}

std::vector<std::string> CorpusFiles(const std::string& sub) {
  std::vector<std::string> files;
  std::string dir = CorpusDir();
  std::error_code ec;
  if (dir.empty() || !fs::is_directory(fs::path(dir) / sub, ec)) return files;
  for (const auto& e : fs::directory_iterator(fs::path(dir) / sub, ec))
    if (e.is_regular_file()) files.push_back(e.path().string());
  std::sort(files.begin(), files.end());
  return files;
}

std::vector<uint8_t> ReadBytes(const std::string& path) {
  std::vector<uint8_t> out;
  if (!hs::os::ReadFile(path, &out)) out.clear();
  return out;
}

std::string MakeTempDir(const std::string& tag) {
  std::random_device rd;
  fs::path p = fs::temp_directory_path() / ("handset-" + tag + "-" + std::to_string(rd()));
  fs::create_directories(p);
  return p.string();
}

int RunCommand(const std::string& cmd, std::string* out) {
  std::FILE* p = popen(cmd.c_str(), "r");
  if (!p) return -1;
  std::array<char, 4096> buf;
  size_t n;
  std::string text;
  while ((n = std::fread(buf.data(), 1, buf.size(), p)) > 0) text.append(buf.data(), n);
  int status = pclose(p);
  if (out) *out = text;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string CliPath() {
  return HANDSET_CLI_PATH;
}

bool HavePythonModule(const std::string& module) {
  return RunCommand("/usr/bin/python3 -c 'import " + module + "' >/dev/null 2>&1", nullptr) == 0;
}

bool HaveTool(const std::string& tool) {
  return RunCommand("command -v " + tool + " >/dev/null 2>&1", nullptr) == 0;
}

}  // namespace test
}  // namespace hs
