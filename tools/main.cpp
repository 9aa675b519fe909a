#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "handset.h"
#include "tools/Cli.h"

namespace {

void PrintHelp(std::FILE* out) {
  std::fprintf(out,
               "usage: handset COMMAND [ARGS...]\n"
               "       handset --version\n\n"
               "Reads, converts and writes what phones exchange with a PC.\n\ncommands:\n");
  for (const hs::cli::Command& c : hs::cli::Commands())
    std::fprintf(out, "  %-10s %s\n", c.name, c.summary);
  std::fprintf(out, "\nRun \"handset COMMAND --help\" for a command's options.\n");
}

}  // namespace

int main(int argc, char** argv) {
  InitialMelodyFormatArray();
  InitialAudioFormatArray();
  if (argc < 2) {
    PrintHelp(stderr);
    return 2;
  }
  std::string name = argv[1];
  if (name == "--help" || name == "-h" || name == "help") {
    PrintHelp(stdout);
    return 0;
  }
  if (name == "--version" || name == "-V") {
    std::printf("handset %s\n", HsVersion());
    return 0;
  }
  for (const hs::cli::Command& c : hs::cli::Commands()) {
    if (name == c.name) return c.run(std::vector<std::string>(argv + 2, argv + argc));
  }
  hs::cli::Fail("", "unknown command \"" + name + "\" (see handset --help)");
  return 2;
}
