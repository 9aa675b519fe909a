#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "handset/platform/Results.h"

namespace hs {
namespace cli {

/// One subcommand. `run` gets the arguments after the subcommand name and returns the exit
/// status (0 only on success).
struct Command {
  const char* name;
  const char* summary;
  const char* usage;  ///< full help text printed by "handset NAME --help"
  int (*run)(const std::vector<std::string>& args);
};

/// Registers a subcommand at start-up: `static hs::cli::Registrar reg{{...}};` in its file.
struct Registrar {
  explicit Registrar(const Command& c);
};
const std::vector<Command>& Commands();

/// Command-line options: flags and options are recognised anywhere; everything else is
/// positional. "--" ends option parsing. Options that take a value are listed in `valued`.
class Args {
 public:
  Args(const std::vector<std::string>& args, const std::vector<std::string>& valued);
  bool Has(const std::string& flag) const;
  /// The value of an option given as "--opt VALUE" or "--opt=VALUE"; `def` when absent.
  std::string Get(const std::string& opt, const std::string& def = std::string()) const;
  /// All values of a repeatable option, in order.
  std::vector<std::string> GetAll(const std::string& opt) const;
  const std::vector<std::string>& Positional() const { return positional_; }
  /// The first unknown option, or empty. Known = flags in `known` plus the valued options.
  std::string Unknown(const std::vector<std::string>& knownFlags) const;
  /// An error message from parsing (an option without its value), or empty.
  const std::string& Error() const { return error_; }

 private:
  std::vector<std::pair<std::string, std::string>> opts_;
  std::vector<std::string> positional_;
  std::vector<std::string> valued_;
  std::string error_;
};

/// "handset: FILE: MESSAGE" on standard error.
void Fail(const std::string& file, const std::string& message);
/// "handset: FILE: FAMILY result CODE: TEXT" on standard error.
void FailCode(const std::string& file, HsResultFamily family, int code);
/// Prints the usage of a command to `out`.
void PrintUsage(const Command& c, std::FILE* out);
/// Handles the --help flag and argument errors shared by all commands. Returns -1 to go on, or
/// the exit status to return.
int CommonChecks(const Command& c, const Args& a, const std::vector<std::string>& knownFlags,
                 size_t minPositional, size_t maxPositional);

/// Reads a whole file ("-" reads standard input). False with a message on failure.
bool ReadInput(const std::string& path, std::vector<uint8_t>* out);
/// Writes a whole file ("-" writes standard output). False with a message on failure.
bool WriteOutput(const std::string& path, const void* data, size_t size);

/// Minimal JSON writer producing compact, valid output.
class Json {
 public:
  Json& BeginObject();
  Json& EndObject();
  Json& BeginArray();
  Json& EndArray();
  Json& Key(const std::string& k);
  Json& String(const std::string& v);
  Json& Number(double v);
  Json& Int(long long v);
  Json& Bool(bool v);
  Json& Null();
  const std::string& Str() const { return out_; }

 private:
  void Sep();
  std::string out_;
  std::vector<bool> first_;
  bool afterKey_ = false;
};

/// True when standard error is a terminal (progress is shown only then).
bool StderrIsTerminal();
/// Shows "label i/n" on the same terminal line; a final call with i == n ends the line.
void Progress(const char* label, size_t i, size_t n);

}  // namespace cli
}  // namespace hs
