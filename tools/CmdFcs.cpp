#include <cstdint>
#include <cstdio>
#include <limits>

#include "handset/pim.h"
#include "tools/Cli.h"

namespace {

const char kUsage[] =
    "usage: handset fcs [--json] [FILE|-]\n\n"
    "Prints the PPP frame check sequence (FCS-16, CRC-16/X-25) of FILE, or of standard input\n"
    "when FILE is \"-\" or absent, as 0xHHHH. --json prints {\"file\", \"length\", \"fcs\"}.\n";

int Run(const std::vector<std::string>& argv);

const hs::cli::Command kCommand{"fcs", "print the PPP FCS-16 of a file", kUsage, Run};
hs::cli::Registrar reg(kCommand);

int Run(const std::vector<std::string>& argv) {
  hs::cli::Args a(argv, {});
  int rc = hs::cli::CommonChecks(kCommand, a, {"--json"}, 0, 1);
  if (rc >= 0) return rc;
  std::string path = a.Positional().empty() ? std::string("-") : a.Positional()[0];
  std::vector<uint8_t> data;
  if (!hs::cli::ReadInput(path, &data)) return 1;
  if (data.size() > std::numeric_limits<unsigned int>::max()) {
    hs::cli::Fail(path, "larger than 4 GB, which the frame check cannot cover");
    return 1;
  }
  uint16_t fcs = ComputeFCS(data.data(), static_cast<unsigned int>(data.size()));
  char hex[8];
  std::snprintf(hex, sizeof hex, "0x%04X", fcs);
  if (a.Has("--json")) {
    hs::cli::Json j;
    j.BeginObject()
        .Key("file")
        .String(path)
        .Key("length")
        .Int(static_cast<long long>(data.size()))
        .Key("fcs")
        .String(hex)
        .EndObject();
    std::printf("%s\n", j.Str().c_str());
  } else {
    std::printf("%s\n", hex);
  }
  return 0;
}

}  // namespace
