#include <cstdint>
#include <cstdio>
#include <filesystem>

#include "handset/melody.h"
#include "tools/Cli.h"

namespace {

const char kUsage[] =
    "usage: handset identify [--json] [--no-content] FILE...\n\n"
    "Reports each file's melody/audio format bits: by extension, and (unless --no-content) by\n"
    "its first bytes. Unreadable files are reported on stderr and make the exit status 1.\n";

struct Identity {
  MDYFMT byExt = 0;
  MDYFMT byContent = 0;
  bool readable = true;
};

Identity Identify(const std::string& path, bool readContent) {
  Identity id;
  id.byExt = _IsMelodyFormatType(path.c_str());
  if (!readContent) return id;
  unsigned char head[20] = {0};
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (!f) {
    id.readable = false;
    return id;
  }
  size_t got = std::fread(head, 1, sizeof(head), f);
  std::fclose(f);
  (void)got;
  id.byContent = GetMdyFmtByAuxDataCont(head, 20) | GetMdyFmtByMdyDataCont(head, 20);
  return id;
}

std::string Names(MDYFMT fmt) {
  CString s = TransToMdyFormatSTR(fmt);
  if (!s.empty() && s.back() == ',') s.pop_back();
  return s.empty() ? std::string("-") : std::string(s);
}

std::string Hex(MDYFMT fmt) {
  char b[16];
  std::snprintf(b, sizeof(b), "0x%X", fmt);
  return b;
}

int Run(const std::vector<std::string>& argv);

const hs::cli::Command kCommand{"identify", "report the melody/audio format of files", kUsage, Run};
hs::cli::Registrar reg(kCommand);

int Run(const std::vector<std::string>& argv) {
  hs::cli::Args a(argv, {});
  int rc = hs::cli::CommonChecks(kCommand, a, {"--json", "--no-content"}, 1, SIZE_MAX);
  if (rc >= 0) return rc;
  bool json = a.Has("--json");
  bool content = !a.Has("--no-content");
  int status = 0;
  hs::cli::Json j;
  if (json) j.BeginArray();
  const auto& files = a.Positional();
  for (size_t i = 0; i < files.size(); ++i) {
    const std::string& path = files[i];
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec)) {
      hs::cli::Fail(path,
                    std::filesystem::exists(path, ec) ? "not a regular file" : "no such file");
      status = 1;
      continue;
    }
    Identity id = Identify(path, content);
    if (!id.readable) {
      hs::cli::Fail(path, "cannot be read");
      status = 1;
      continue;
    }
    if (json) {
      j.BeginObject().Key("file").String(path);
      j.Key("extension")
          .BeginObject()
          .Key("value")
          .Int(id.byExt)
          .Key("names")
          .String(Names(id.byExt) == "-" ? "" : Names(id.byExt));
      j.EndObject();
      if (content) {
        j.Key("content")
            .BeginObject()
            .Key("value")
            .Int(id.byContent)
            .Key("names")
            .String(Names(id.byContent) == "-" ? "" : Names(id.byContent));
        j.EndObject();
      }
      j.EndObject();
    } else {
      std::printf("%s\text %s %s", path.c_str(), Hex(id.byExt).c_str(), Names(id.byExt).c_str());
      if (content)
        std::printf("\tcontent %s %s", Hex(id.byContent).c_str(), Names(id.byContent).c_str());
      std::printf("\n");
    }
    if (files.size() > 50) hs::cli::Progress("identify", i + 1, files.size());
  }
  if (json) {
    j.EndArray();
    std::printf("%s\n", j.Str().c_str());
  }
  return status;
}

}  // namespace
