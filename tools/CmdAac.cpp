#include <cstdio>
#include <memory>
#include <string>

#include "handset/audio.h"
#include "handset/platform.h"
#include "tools/Cli.h"
#include "tools/WavFile.h"

namespace {

const char kUsage[] =
    "usage: handset aac info FILE [--json]\n"
    "       handset aac decode IN OUT.wav\n\n"
    "info    type (ADIF or ADTS), channels, sample rate, frames, seconds and bit rate\n"
    "        (units of 1024 bit/s)\n"
    "decode  the whole file to a 16-bit PCM WAV\n"
    "ADIF files and decoding need the AAC decoder module (M4aacDec) at run time. Only ADTS\n"
    "streams whose sync is 0xFFF9 or 0xFFF8 are recognised.\n";

const char* TypeName(int type) {
  return type == 1 ? "ADIF" : type == 2 ? "ADTS" : "none";
}

bool LoadAac(const std::string& path, CAac* aac) {
  if (aac->Load(path.c_str())) return true;
  hs::cli::Fail(path, CAac::IsAACDllLoad()
                          ? "not an AAC file (ADIF, or ADTS with sync 0xFFF9/0xFFF8)"
                          : "not an ADTS AAC file (ADIF needs the AAC decoder module M4aacDec, "
                            "which cannot be loaded)");
  return false;
}

int Info(const std::string& path, bool json) {
  CAac aac;
  if (!LoadAac(path, &aac)) return 1;
  unsigned long frames = aac.GetNumSamples();
  if (json) {
    hs::cli::Json j;
    j.BeginObject().Key("file").String(path).Key("type").Int(aac.GetAACType());
    j.Key("type_name").String(TypeName(aac.GetAACType()));
    j.Key("channels").Int(aac.GetNumChannels()).Key("sample_rate").Int(aac.GetSamplingFreq());
    j.Key("frames").Int(static_cast<long long>(frames)).Key("seconds").Number(aac.GetAACLength());
    j.Key("bit_rate_1024").Int(static_cast<long long>(aac.GetBitRate()));
    j.EndObject();
    std::printf("%s\n", j.Str().c_str());
  } else {
    std::printf(
        "file\t%s\ntype\t%d %s\nchannels\t%d\nsample rate\t%d\nframes\t%lu\nseconds\t%.3f\n"
        "bit rate\t%lu x 1024 bit/s\n",
        path.c_str(), aac.GetAACType(), TypeName(aac.GetAACType()), aac.GetNumChannels(),
        aac.GetSamplingFreq(), frames, aac.GetAACLength(), aac.GetBitRate());
  }
  return 0;
}

// Decoding errors arrive as a message box; the command reports them as a warning on stderr.
int RecordBox(const char* text, const char*, unsigned, void* user) {
  *static_cast<std::string*>(user) = text ? text : "";
  return 1;
}

int Decode(const std::string& in, const std::string& out) {
  CAac aac;
  if (!LoadAac(in, &aac)) return 1;
  if (!CAac::IsAACDllLoad()) {
    hs::cli::Fail(in, "the AAC decoder module M4aacDec cannot be loaded");
    return 1;
  }
  WAVEFORMATEX format{};
  unsigned char* pcm = nullptr;
  int length = 0;
  std::string error;
  HsSetMessageBoxHandler(RecordBox, &error);
  bool decoded = aac.Decode(&format, &pcm, &length);
  HsSetMessageBoxHandler(nullptr, nullptr);
  if (!decoded) {
    hs::cli::Fail(in, "cannot be decoded");
    return 1;
  }
  if (!error.empty())
    hs::cli::Fail(in, "warning: " + error + " The audio before the error is kept.");
  std::unique_ptr<unsigned char[]> owned(pcm);
  std::vector<uint8_t> wav =
      hs::cli::BuildWav(format.nChannels, format.nSamplesPerSec, pcm, static_cast<size_t>(length));
  return hs::cli::WriteOutput(out, wav.data(), wav.size()) ? 0 : 1;
}

int Run(const std::vector<std::string>& argv);

const hs::cli::Command kCommand{"aac", "AAC files: info, decode to WAV", kUsage, Run};
hs::cli::Registrar reg(kCommand);

int Run(const std::vector<std::string>& argv) {
  hs::cli::Args a(argv, {});
  int rc = hs::cli::CommonChecks(kCommand, a, {"--json"}, 1, 3);
  if (rc >= 0) return rc;
  const auto& p = a.Positional();
  const std::string& action = p[0];
  bool known = action == "info" || action == "decode";
  if (!known || p.size() != (action == "info" ? 2u : 3u)) {
    hs::cli::Fail("aac",
                  known ? "wrong number of arguments for " + action : "unknown action " + action);
    hs::cli::PrintUsage(kCommand, stderr);
    return 2;
  }
  try {
    if (action == "info") return Info(p[1], a.Has("--json"));
    return Decode(p[1], p[2]);
  } catch (const tarvox::cpp::ReaderException& e) {
    hs::cli::Fail(p[1], e.what());
  }
  return 1;
}

}  // namespace
