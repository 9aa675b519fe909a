#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "handset/melody.h"
#include "tools/Cli.h"

namespace {

namespace rc = hs::smaf;

const char kUsage[] =
    "usage: handset mmf info FILE [--json]\n"
    "       handset mmf set FILE [-o OUT] [--copy-status N] [--led CH|none] [--vib "
    "CH=on|off]...\n\n"
    "info  reports a SMAF (.mmf) file: type, size, whether its trailing CRC-16 matches, copy\n"
    "      status, MA-2 LED channel and, per channel 0-15, whether a score track covers it and\n"
    "      whether its vibration switch is on. A file that fails to parse is still reported as\n"
    "      far as it was read, and the exit status is 1.\n"
    "set   patches the file in place, or writes the patched image to OUT (\"-\" for standard\n"
    "      output); the CRC is recomputed. --copy-status takes 0-255 (0x.. accepted), --led a\n"
    "      channel 0-15 or none, --vib may be repeated. A file without an LED item grows by 5\n"
    "      bytes. Switching vibration off is recorded in memory only: the file's bit stays set.\n";

int Run(const std::vector<std::string>& argv);

const hs::cli::Command kCommand{"mmf", "report or patch SMAF ringtone settings", kUsage, Run};
hs::cli::Registrar reg(kCommand);

bool ParseInt(const std::string& text, long lo, long hi, long* out) {
  if (text.empty()) return false;
  char* end = nullptr;
  errno = 0;
  long v = std::strtol(text.c_str(), &end, 0);
  if (errno != 0 || *end != '\0' || v < lo || v > hi) return false;
  *out = v;
  return true;
}

int Info(const std::string& path, bool json) {
  std::vector<uint8_t> bytes;
  if (!hs::cli::ReadInput(path, &bytes)) return 1;
  CMMFInfo info;
  int result = bytes.empty()
                   ? rc::kErrEmpty
                   : info.OpenMMFBuf(bytes.data(), static_cast<unsigned long>(bytes.size()));
  // Parsing checks the CRC first: any later failure means it matched.
  const bool crcOk = result == rc::kOk || result == rc::kErrLedChannel ||
                     result == rc::kErrStatusPastEnd || result == rc::kErrTooManyTracks;
  int led = -1;
  info.GetMA2LedStatus(&led);
  if (json) {
    hs::cli::Json j;
    j.BeginObject().Key("file").String(path);
    j.Key("type").Int(info.GetMMFType()).Key("size").Int(static_cast<long long>(bytes.size()));
    j.Key("crc_ok").Bool(crcOk).Key("result").Int(result);
    j.Key("copy_status").Int(info.IsOpened() ? info.GetCopyStatus() : 0);
    j.Key("led_channel");
    if (led < 0)
      j.Null();
    else
      j.Int(led);
    j.Key("channels").BeginArray();
    for (int c = 0; c < 16; ++c) {
      int vib = 0;
      info.GetVibStatus(c, &vib);
      j.BeginObject().Key("channel").Int(c).Key("valid").Bool(info.IsValidTrack(c) != 0);
      j.Key("vibration").Bool(vib != 0).EndObject();
    }
    j.EndArray().EndObject();
    std::printf("%s\n", j.Str().c_str());
  } else {
    std::printf("file: %s\n", path.c_str());
    std::printf("type: %s\n", info.GetMMFType() == 2   ? "MA-2"
                              : info.GetMMFType() == 3 ? "MA-3"
                                                       : "unknown");
    std::printf("size: %zu bytes\n", bytes.size());
    std::printf("crc: %s\n", crcOk ? "ok" : "mismatch");
    std::printf("copy status: 0x%02X\n", info.IsOpened() ? info.GetCopyStatus() : 0);
    if (led < 0)
      std::printf("led channel: none\n");
    else
      std::printf("led channel: %d\n", led);
    std::printf("channel  valid  vibration\n");
    for (int c = 0; c < 16; ++c) {
      int vib = 0;
      info.GetVibStatus(c, &vib);
      std::printf("%7d  %-5s  %s\n", c, info.IsValidTrack(c) ? "yes" : "no", vib ? "on" : "off");
    }
  }
  info.CloseMMF(0);
  if (result != rc::kOk) {
    hs::cli::FailCode(path, HS_RESULT_SMAF, result);
    return 1;
  }
  return 0;
}

struct VibChange {
  int channel;
  int on;
};

int Set(const hs::cli::Args& a, const std::string& path) {
  long copyStatus = -1, led = -2;
  std::vector<VibChange> vibs;
  if (a.Has("--copy-status") && !ParseInt(a.Get("--copy-status"), 0, 255, &copyStatus)) {
    hs::cli::Fail(path, "--copy-status needs a number 0-255");
    return 2;
  }
  if (a.Has("--led")) {
    std::string v = a.Get("--led");
    if (v == "none") {
      led = -1;
    } else if (!ParseInt(v, -1, 15, &led)) {
      hs::cli::Fail(path, "--led needs a channel 0-15 or none");
      return 2;
    }
  }
  for (const std::string& v : a.GetAll("--vib")) {
    size_t eq = v.find('=');
    long ch = 0;
    std::string state = eq == std::string::npos ? std::string() : v.substr(eq + 1);
    if (eq == std::string::npos || !ParseInt(v.substr(0, eq), 0, 15, &ch) ||
        (state != "on" && state != "off")) {
      hs::cli::Fail(path, "--vib needs CH=on or CH=off with CH 0-15, not \"" + v + "\"");
      return 2;
    }
    vibs.push_back({static_cast<int>(ch), state == "on" ? 1 : 0});
  }
  if (copyStatus < 0 && led == -2 && vibs.empty()) {
    hs::cli::Fail(path, "nothing to set: give --copy-status, --led or --vib");
    return 2;
  }

  CMMFInfo info;
  int result = info.OpenMMF(path.c_str());
  if (result == rc::kOk && copyStatus >= 0)
    result = info.SetCopyStatus(static_cast<unsigned char>(copyStatus));
  if (result == rc::kOk && led != -2) result = info.SetMA2LedStatus(static_cast<int>(led));
  for (const VibChange& v : vibs)
    if (result == rc::kOk) result = info.SetVibStatus(v.channel, v.on);
  if (result != rc::kOk) {
    info.CloseMMF(0);
    hs::cli::FailCode(path, HS_RESULT_SMAF, result);
    return 1;
  }
  std::string out = a.Get("-o");
  bool ok = true;
  if (!out.empty()) {
    ok = hs::cli::WriteOutput(out, info.GetMMFBuffer(), info.GetMMFSize());
  } else {
    result = info.SaveMMF(nullptr);
    if (result != rc::kOk) {
      hs::cli::FailCode(path, HS_RESULT_SMAF, result);
      ok = false;
    }
  }
  info.CloseMMF(0);
  return ok ? 0 : 1;
}

int Run(const std::vector<std::string>& argv) {
  hs::cli::Args a(argv, {"-o", "--copy-status", "--led", "--vib"});
  int rc = hs::cli::CommonChecks(kCommand, a, {"--json"}, 2, 2);
  if (rc >= 0) return rc;
  const std::string& action = a.Positional()[0];
  const std::string& path = a.Positional()[1];
  if (action == "info") return Info(path, a.Has("--json"));
  if (action == "set") return Set(a, path);
  hs::cli::Fail(kCommand.name, "unknown action \"" + action + "\" (use info or set)");
  hs::cli::PrintUsage(kCommand, stderr);
  return 2;
}

}  // namespace
