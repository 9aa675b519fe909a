#include "tools/Cli.h"

#include <cmath>
#include <cstring>

#include "handset/platform/Console.h"

namespace hs {
namespace cli {

namespace {
std::vector<Command>& Registry() {
  static std::vector<Command> commands;
  return commands;
}
}  // namespace

Registrar::Registrar(const Command& c) {
  Registry().push_back(c);
}
const std::vector<Command>& Commands() {
  return Registry();
}

Args::Args(const std::vector<std::string>& args, const std::vector<std::string>& valued)
    : valued_(valued) {
  bool optionsDone = false;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (optionsDone || a.size() < 2 || a[0] != '-' || a == "-") {
      positional_.push_back(a);
      continue;
    }
    if (a == "--") {
      optionsDone = true;
      continue;
    }
    std::string name = a, value;
    size_t eq = a.find('=');
    bool hasValue = false;
    if (a.compare(0, 2, "--") == 0 && eq != std::string::npos) {
      name = a.substr(0, eq);
      value = a.substr(eq + 1);
      hasValue = true;
    }
    bool isValued = false;
    for (const std::string& v : valued_) isValued = isValued || v == name;
    if (isValued && !hasValue) {
      if (i + 1 >= args.size()) {
        error_ = "option " + name + " needs a value";
        continue;
      }
      value = args[++i];
    }
    opts_.emplace_back(name, value);
  }
}

bool Args::Has(const std::string& flag) const {
  for (const auto& o : opts_)
    if (o.first == flag) return true;
  return false;
}

std::string Args::Get(const std::string& opt, const std::string& def) const {
  std::string v = def;
  for (const auto& o : opts_)
    if (o.first == opt) v = o.second;
  return v;
}

std::vector<std::string> Args::GetAll(const std::string& opt) const {
  std::vector<std::string> v;
  for (const auto& o : opts_)
    if (o.first == opt) v.push_back(o.second);
  return v;
}

std::string Args::Unknown(const std::vector<std::string>& knownFlags) const {
  for (const auto& o : opts_) {
    bool known = o.first == "--help" || o.first == "-h";
    for (const std::string& k : knownFlags) known = known || k == o.first;
    for (const std::string& k : valued_) known = known || k == o.first;
    if (!known) return o.first;
  }
  return std::string();
}

void Fail(const std::string& file, const std::string& message) {
  if (file.empty())
    std::fprintf(stderr, "handset: %s\n", message.c_str());
  else
    std::fprintf(stderr, "handset: %s: %s\n", file.c_str(), message.c_str());
}

void FailCode(const std::string& file, HsResultFamily family, int code) {
  std::string m = std::string(HsResultFamilyName(family)) + " result " + std::to_string(code) +
                  ": " + HsResultText(family, code);
  Fail(file, m);
}

void PrintUsage(const Command& c, std::FILE* out) {
  std::fprintf(out, "%s", c.usage);
}

int CommonChecks(const Command& c, const Args& a, const std::vector<std::string>& knownFlags,
                 size_t minPositional, size_t maxPositional) {
  if (a.Has("--help") || a.Has("-h")) {
    PrintUsage(c, stdout);
    return 0;
  }
  std::string bad = a.Unknown(knownFlags);
  std::string err = !a.Error().empty()                      ? a.Error()
                    : !bad.empty()                          ? "unknown option " + bad
                    : a.Positional().size() < minPositional ? "missing arguments"
                    : a.Positional().size() > maxPositional ? "too many arguments"
                                                            : std::string();
  if (err.empty()) return -1;
  Fail(c.name, err);
  PrintUsage(c, stderr);
  return 2;
}

bool ReadInput(const std::string& path, std::vector<uint8_t>* out) {
  out->clear();
  std::FILE* f = path == "-" ? stdin : std::fopen(path.c_str(), "rb");
  if (!f) {
    Fail(path, std::string("cannot open: ") + std::strerror(errno));
    return false;
  }
  uint8_t buf[65536];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof(buf), f)) > 0) out->insert(out->end(), buf, buf + n);
  bool ok = !std::ferror(f);
  if (f != stdin) std::fclose(f);
  if (!ok) Fail(path, "read error");
  return ok;
}

bool WriteOutput(const std::string& path, const void* data, size_t size) {
  std::FILE* f = path == "-" ? stdout : std::fopen(path.c_str(), "wb");
  if (!f) {
    Fail(path, std::string("cannot create: ") + std::strerror(errno));
    return false;
  }
  bool ok = size == 0 || std::fwrite(data, 1, size, f) == size;
  ok = (f == stdout ? std::fflush(f) == 0 : std::fclose(f) == 0) && ok;
  if (!ok) Fail(path, "write error");
  return ok;
}

void Json::Sep() {
  if (afterKey_) {
    afterKey_ = false;
    return;
  }
  if (!first_.empty()) {
    if (!first_.back()) out_ += ',';
    first_.back() = false;
  }
}

Json& Json::BeginObject() {
  Sep();
  out_ += '{';
  first_.push_back(true);
  return *this;
}
Json& Json::EndObject() {
  out_ += '}';
  first_.pop_back();
  return *this;
}
Json& Json::BeginArray() {
  Sep();
  out_ += '[';
  first_.push_back(true);
  return *this;
}
Json& Json::EndArray() {
  out_ += ']';
  first_.pop_back();
  return *this;
}
Json& Json::Key(const std::string& k) {
  String(k);
  out_ += ':';
  afterKey_ = true;
  return *this;
}
Json& Json::String(const std::string& v) {
  Sep();
  out_ += '"';
  for (unsigned char c : v) {
    switch (c) {
      case '"':
        out_ += "\\\"";
        break;
      case '\\':
        out_ += "\\\\";
        break;
      case '\n':
        out_ += "\\n";
        break;
      case '\r':
        out_ += "\\r";
        break;
      case '\t':
        out_ += "\\t";
        break;
      default:
        if (c < 0x20) {
          char b[8];
          std::snprintf(b, sizeof(b), "\\u%04x", c);
          out_ += b;
        } else {
          out_ += static_cast<char>(c);
        }
    }
  }
  out_ += '"';
  return *this;
}
Json& Json::Number(double v) {
  Sep();
  if (!std::isfinite(v)) {
    out_ += "null";
    return *this;
  }
  char b[32];
  std::snprintf(b, sizeof(b), "%.10g", v);
  out_ += b;
  return *this;
}
Json& Json::Int(long long v) {
  Sep();
  out_ += std::to_string(v);
  return *this;
}
Json& Json::Bool(bool v) {
  Sep();
  out_ += v ? "true" : "false";
  return *this;
}
Json& Json::Null() {
  Sep();
  out_ += "null";
  return *this;
}

bool StderrIsTerminal() {
  return HsStreamIsTerminal(stderr);
}

void Progress(const char* label, size_t i, size_t n) {
  if (!StderrIsTerminal()) return;
  std::fprintf(stderr, "\r%s %zu/%zu", label, i, n);
  if (i >= n) std::fprintf(stderr, "\n");
  std::fflush(stderr);
}

}  // namespace cli
}  // namespace hs
