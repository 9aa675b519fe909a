#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "handset/pim.h"
#include "tools/Cli.h"

namespace {

const char kUsage[] =
    "usage: handset vbkm new --title T --url U [--dialect generic|oem] [-o FILE]\n"
    "       handset vbkm show FILE [--json]\n"
    "       handset vbkm from-url FILE.url [-o FILE.vbm]\n\n"
    "new       writes a vBookmark (to standard output unless -o is given). The oem dialect adds\n"
    "          X-S-BROWSERTYPE:FULL and a quoted-printable Shift_JIS-labelled title.\n"
    "show      prints title, URL, version and browser type of a vBookmark (either dialect).\n"
    "from-url  turns an Internet shortcut file into a vBookmark of the oem dialect; the title\n"
    "          is the file name without its extension.\n";

int Run(const std::vector<std::string>& argv);

const hs::cli::Command kCommand{"vbkm", "write, show and convert vBookmarks", kUsage, Run};
hs::cli::Registrar reg(kCommand);

bool WriteComposed(CVObjLite& v, const std::string& out, const std::string& name) {
  char* buf = nullptr;
  int size = 0;
  bool ok = v.Composing(buf, size);
  std::unique_ptr<char[]> owner(buf);
  if (!ok) {
    hs::cli::Fail(name, "the vBookmark could not be composed");
    return false;
  }
  return hs::cli::WriteOutput(out, buf, static_cast<size_t>(size));
}

int New(const hs::cli::Args& a) {
  if (!a.Positional().empty() && a.Positional().size() != 1) {
    hs::cli::Fail("vbkm new", "takes no file arguments (use -o)");
    return 2;
  }
  if (a.GetAll("--title").empty() || a.GetAll("--url").empty()) {
    hs::cli::Fail("vbkm new", "needs --title and --url");
    return 2;
  }
  std::string dialect = a.Get("--dialect", "generic");
  std::unique_ptr<CVbkm> v;
  if (dialect == "generic") {
    v = std::make_unique<CVbkm>();
  } else if (dialect == "oem") {
    v = std::make_unique<COemPanaVbkm>();
  } else {
    hs::cli::Fail(dialect, "unknown dialect (generic or oem)");
    return 2;
  }
  if (!v->CreateEmptyProperties()) {
    hs::cli::Fail("vbkm new", "the empty vBookmark could not be built");
    return 1;
  }
  v->SetTitleAndUrl(a.Get("--title").c_str(), a.Get("--url").c_str());
  return WriteComposed(*v, a.Get("-o", "-"), "vbkm new") ? 0 : 1;
}

// Values as a reader sees them: decoded from the encoding their line carries.
std::string Value(CVbkm& v, const char* name) {
  CString s;
  if (v.GetPropDecodedValue(name, &s)) return s;
  const char* held = v.GetPropTableValue(name);
  return held ? held : "";
}

int Show(const hs::cli::Args& a) {
  if (a.Positional().size() != 2) {
    hs::cli::Fail("vbkm show", "needs exactly one FILE");
    return 2;
  }
  const std::string& path = a.Positional()[1];
  std::vector<uint8_t> bytes;
  if (!hs::cli::ReadInput(path, &bytes)) return 1;
  std::string text(bytes.begin(), bytes.end());
  VBKM_PARSE_RESULT r;
  std::unique_ptr<CVbkm> v(_VBKM_Parse(text.c_str(), false, &r));
  if (!v) {
    CString msg;
    msg.Format("not a vBookmark: %s (vObject error code %d)", r.error.c_str(), r.errorCode);
    hs::cli::Fail(path, msg);
    return 1;
  }
  const char* dialect = r.dialect == VBKM_DIALECT_OEM ? "oem" : "generic";
  if (a.Has("--json")) {
    hs::cli::Json j;
    j.BeginObject()
        .Key("file")
        .String(path)
        .Key("dialect")
        .String(dialect)
        .Key("version")
        .String(Value(*v, "VERSION"))
        .Key("title")
        .String(Value(*v, "TITLE"))
        .Key("url")
        .String(Value(*v, "URL"))
        .Key("shortcutUrl")
        .String(Value(*v, "X-IRMC-URL"));
    if (std::string(dialect) == "oem") j.Key("browserType").String(Value(*v, "X-S-BROWSERTYPE"));
    j.EndObject();
    std::printf("%s\n", j.Str().c_str());
  } else {
    std::printf("dialect\t%s\nversion\t%s\ntitle\t%s\nurl\t%s\n", dialect,
                Value(*v, "VERSION").c_str(), Value(*v, "TITLE").c_str(), Value(*v, "URL").c_str());
    if (std::string(dialect) == "oem")
      std::printf("browser\t%s\n", Value(*v, "X-S-BROWSERTYPE").c_str());
  }
  return 0;
}

int FromUrl(const hs::cli::Args& a) {
  if (a.Positional().size() != 2) {
    hs::cli::Fail("vbkm from-url", "needs exactly one FILE.url");
    return 2;
  }
  const std::string& path = a.Positional()[1];
  std::vector<uint8_t> bytes;
  if (!hs::cli::ReadInput(path, &bytes)) return 1;
  std::string text(bytes.begin(), bytes.end());
  CIEVbkm v;
  CString name = path == "-" ? "" : std::filesystem::u8path(path).filename().u8string();
  if (!v.Parsing(&text[0], &name)) {
    hs::cli::Fail(path, "the shortcut could not be read through a temporary file");
    return 1;
  }
  return WriteComposed(v, a.Get("-o", "-"), path) ? 0 : 1;
}

int Run(const std::vector<std::string>& argv) {
  hs::cli::Args a(argv, {"--title", "--url", "--dialect", "-o"});
  int rc = hs::cli::CommonChecks(kCommand, a, {"--json"}, 1, 2);
  if (rc >= 0) return rc;
  const std::string& sub = a.Positional()[0];
  if (sub == "new") return New(a);
  if (sub == "show") return Show(a);
  if (sub == "from-url") return FromUrl(a);
  hs::cli::Fail(sub, "unknown subcommand (new, show or from-url)");
  return 2;
}

}  // namespace
