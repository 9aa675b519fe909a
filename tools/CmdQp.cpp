#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "handset/pim.h"
#include "tools/Cli.h"

namespace {

const char kUsage[] =
    "usage: handset qp encode|decode [FILE|-]\n\n"
    "Quoted-printable coding of FILE (standard input when absent or \"-\") to standard output.\n"
    "Only upper-case hex digits form an escape. Encoding inserts no soft line breaks; a byte\n"
    "below 0x10 other than CR and LF becomes '=' and one digit and ends the output. Input stops\n"
    "at its first NUL byte.\n";

int Run(const std::vector<std::string>& argv);

const hs::cli::Command kCommand{"qp", "quoted-printable encode or decode", kUsage, Run};
hs::cli::Registrar reg(kCommand);

int Run(const std::vector<std::string>& argv) {
  hs::cli::Args a(argv, {});
  int rc = hs::cli::CommonChecks(kCommand, a, {}, 1, 2);
  if (rc >= 0) return rc;
  const std::string& mode = a.Positional()[0];
  if (mode != "encode" && mode != "decode") {
    hs::cli::Fail(mode, "unknown mode (encode or decode)");
    return 2;
  }
  std::string path = a.Positional().size() > 1 ? a.Positional()[1] : "-";
  std::vector<uint8_t> in;
  if (!hs::cli::ReadInput(path, &in)) return 1;
  in.push_back(0);
  CQP qp;
  const char* text = reinterpret_cast<const char*>(in.data());
  const char* out = mode == "encode" ? qp.Encode(text) : qp.Decode(text);
  if (!out) {
    hs::cli::Fail(path, "an escape is cut short by the end of the input");
    return 1;
  }
  return hs::cli::WriteOutput("-", out, qp.GetLength()) ? 0 : 1;
}

}  // namespace
