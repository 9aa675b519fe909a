#include <cstdio>
#include <memory>
#include <string>

#include "handset/audio.h"
#include "handset/platform.h"
#include "tools/Cli.h"
#include "tools/WavFile.h"

namespace {

const char kUsage[] =
    "usage: handset amr info FILE [--json]\n"
    "       handset amr channel IN N OUT\n"
    "       handset amr encode IN.wav OUT.amr\n"
    "       handset amr decode IN.amr OUT.wav\n\n"
    "info     storage type, channels, frames and playing time (frames x 20 ms)\n"
    "channel  writes channel N (0-based) of a multichannel file as a single-channel file\n"
    "encode   16-bit PCM WAV, mono at 8000 Hz, to AMR-NB at 12.2 kbit/s\n"
    "decode   single-channel AMR-NB to a 16-bit mono WAV at 8000 Hz\n"
    "The codec commands need the opencore-amrnb library at run time.\n";

const char* TypeName(int type) {
  switch (type) {
    case 1:
      return "AMR-NB";
    case 2:
      return "AMR-WB";
    case 3:
      return "AMR-NB multichannel";
    case 4:
      return "AMR-WB multichannel";
    default:
      return "none";
  }
}

bool LoadAmr(const std::string& path, CAmr* amr) {
  if (amr->Load(path.c_str())) return true;
  short type = 0;
  hs::cli::Fail(path, CAmr::IsAmrFormat(path.c_str(), type) ? "AMR file holds no frame data"
                                                            : "not an AMR storage file");
  return false;
}

int Info(const std::string& path, bool json) {
  CAmr amr;
  if (!LoadAmr(path, &amr)) return 1;
  unsigned long frames = amr.GetNumSamples();
  // GetAmrLength() in seconds, without counting the frames a second time.
  double seconds = frames * 0.02;
  if (json) {
    hs::cli::Json j;
    j.BeginObject().Key("file").String(path).Key("type").Int(amr.GetAmrType());
    j.Key("type_name").String(TypeName(amr.GetAmrType())).Key("channels").Int(amr.GetNumChannels());
    j.Key("frames").Int(static_cast<long long>(frames)).Key("seconds").Number(seconds);
    j.EndObject();
    std::printf("%s\n", j.Str().c_str());
  } else {
    std::printf("file\t%s\ntype\t%d %s\nchannels\t%d\nframes\t%lu\nseconds\t%.2f\n", path.c_str(),
                amr.GetAmrType(), TypeName(amr.GetAmrType()), amr.GetNumChannels(), frames,
                seconds);
  }
  return 0;
}

int Channel(const std::string& in, const std::string& n, const std::string& out) {
  char* end = nullptr;
  unsigned long channel = std::strtoul(n.c_str(), &end, 10);
  if (n.empty() || *end || channel > 0xFFFF) {
    hs::cli::Fail(n, "not a channel number");
    return 2;
  }
  CAmr amr;
  if (!LoadAmr(in, &amr)) return 1;
  unsigned long size = amr.GetSingleChannelSize();
  std::unique_ptr<char[]> buf(new char[size ? size : 1]());
  if (!amr.GetSingleChannel(static_cast<unsigned short>(channel), buf.get())) {
    hs::cli::Fail(in, channel >= static_cast<unsigned long>(amr.GetNumChannels())
                          ? "has " + std::to_string(amr.GetNumChannels()) + " channel(s), not " +
                                std::to_string(channel + 1)
                          : "frames run past the end of the data");
    return 1;
  }
  // Multichannel files become the single-channel type of the same band.
  int type = amr.GetAmrType() == 4 || amr.GetAmrType() == 2 ? 2 : 1;
  CAmr single;
  CAmr::ConstructAmrObject(static_cast<unsigned short>(type), 1, buf.release(), size, single,
                           false);
  if (!single.Save(out.c_str())) {
    hs::cli::Fail(out, "cannot be written");
    return 1;
  }
  return 0;
}

int Encode(const std::string& in, const std::string& out) {
  std::vector<uint8_t> file;
  if (!hs::cli::ReadInput(in, &file)) return 1;
  hs::cli::Wav wav;
  std::string error;
  if (!hs::cli::ParseWav(file, &wav, &error)) {
    hs::cli::Fail(in, error);
    return 1;
  }
  if (wav.channels != 1 || wav.sampleRate != 8000) {
    hs::cli::Fail(in, "AMR-NB needs mono PCM at 8000 Hz (have " + std::to_string(wav.channels) +
                          " channel(s) at " + std::to_string(wav.sampleRate) + " Hz)");
    return 1;
  }
  if (!tarvox::cpp::AmrNBCodec::isAvailable()) {
    hs::cli::Fail(in, "the AMR-NB codec (opencore-amrnb) cannot be loaded");
    return 1;
  }
  unsigned long frames = static_cast<unsigned long>((wav.data.size() / 2 + 159) / 160);
  tarvox::cpp::MemoryReader pcm(reinterpret_cast<const char*>(wav.data.data()),
                                static_cast<unsigned long>(wav.data.size()));
  tarvox::cpp::MemoryWriter amr(6 + frames * 32);
  if (!tarvox::cpp::AmrNBCodec::encodeAmrStorageFromPCM(pcm, amr)) {
    hs::cli::Fail(in, "no samples to encode");
    return 1;
  }
  return hs::cli::WriteOutput(out, amr.getData(), amr.getPosition()) ? 0 : 1;
}

int Decode(const std::string& in, const std::string& out) {
  CAmr amr;
  if (!LoadAmr(in, &amr)) return 1;
  if (amr.GetAmrType() != 1) {
    hs::cli::Fail(in, std::string("only single-channel AMR-NB can be decoded, this is ") +
                          TypeName(amr.GetAmrType()));
    return 1;
  }
  if (!tarvox::cpp::AmrNBCodec::isAvailable()) {
    hs::cli::Fail(in, "the AMR-NB codec (opencore-amrnb) cannot be loaded");
    return 1;
  }
  std::vector<char> storage(CAmr::SingleChannelAmrNBHeader, CAmr::SingleChannelAmrNBHeader + 6);
  storage.insert(storage.end(), amr.GetBuffer(), amr.GetBuffer() + amr.GetBufferLength());
  tarvox::cpp::MemoryReader reader(storage.data(), static_cast<unsigned long>(storage.size()));
  tarvox::cpp::MemoryWriter pcm(amr.GetNumSamples() * 320);
  if (!tarvox::cpp::AmrNBCodec::decodeAmrStorageToPCM(reader, pcm)) {
    hs::cli::Fail(in, "cannot be decoded");
    return 1;
  }
  std::vector<uint8_t> wav = hs::cli::BuildWav(
      1, 8000, reinterpret_cast<const uint8_t*>(pcm.getData()), pcm.getPosition());
  return hs::cli::WriteOutput(out, wav.data(), wav.size()) ? 0 : 1;
}

int Run(const std::vector<std::string>& argv);

const hs::cli::Command kCommand{"amr", "AMR files: info, channel extraction, encode, decode",
                                kUsage, Run};
hs::cli::Registrar reg(kCommand);

int Run(const std::vector<std::string>& argv) {
  hs::cli::Args a(argv, {});
  int rc = hs::cli::CommonChecks(kCommand, a, {"--json"}, 1, 4);
  if (rc >= 0) return rc;
  const auto& p = a.Positional();
  const std::string& action = p[0];
  size_t want = action == "info" ? 2 : action == "channel" ? 4 : 3;
  if ((action != "info" && action != "channel" && action != "encode" && action != "decode") ||
      p.size() != want) {
    hs::cli::Fail(
        "amr", action == "info" || action == "channel" || action == "encode" || action == "decode"
                   ? "wrong number of arguments for " + action
                   : "unknown action " + action);
    hs::cli::PrintUsage(kCommand, stderr);
    return 2;
  }
  try {
    if (action == "info") return Info(p[1], a.Has("--json"));
    if (action == "channel") return Channel(p[1], p[2], p[3]);
    if (action == "encode") return Encode(p[1], p[2]);
    return Decode(p[1], p[2]);
  } catch (const tarvox::cpp::ReaderException& e) {
    hs::cli::Fail(p[1], e.what());
  } catch (const tarvox::cpp::WriterException& e) {
    hs::cli::Fail(p[1], e.what());
  }
  return 1;
}

}  // namespace
