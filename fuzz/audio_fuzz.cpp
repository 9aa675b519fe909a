#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "audio/aac/AdtsFrames.h"
#include "audio/amr/AmrFrames.h"
#include "handset/audio.h"
#include "handset/platform/Streams.h"

namespace {

// The file-based readers are driven through one scratch file per process, in memory where the
// system offers a folder for it (rewriting a disk file forces a write-back on every close).
const std::string& ScratchPath() {
  static const std::string path = [] {
    std::error_code ec;
    std::string dir = std::filesystem::is_directory("/dev/shm", ec)
                          ? "/dev/shm"
                          : std::filesystem::temp_directory_path(ec).string();
    char name[64];
    std::snprintf(name, sizeof name, "/handset-audio-fuzz-%p.bin", static_cast<void*>(name));
    return dir + name;
  }();
  static const bool cleanup = std::atexit([] { std::remove(ScratchPath().c_str()); }) == 0;
  (void)cleanup;
  return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  // The first byte picks the channel count; the rest is frame data.
  unsigned channels = data[0] & 0x0F;
  hs::amr::CountFrames(data + 1, size - 1, channels);
  hs::aac::CountAdtsFrames(data, size);

  CAmr amr;
  CAmr::ConstructAmrObject(3, static_cast<unsigned short>(channels), const_cast<uint8_t*>(data + 1),
                           size - 1, amr, true);
  std::vector<char> out(amr.GetSingleChannelSize() + 1);
  for (unsigned short c = 0; c <= channels; ++c) amr.GetSingleChannel(c, out.data());

  tarvox::cpp::MemoryReader r(reinterpret_cast<const char*>(data),
                              static_cast<unsigned long>(size));
  try {
    while (!r.isEnd()) {
      switch (r.readChar() & 3) {
        case 0:
          r.readShort();
          break;
        case 1:
          r.readLong();
          break;
        case 2: {
          char buf[16];
          r.read(buf, sizeof buf);
          break;
        }
        default:
          r.advance(static_cast<unsigned char>(r.readChar()));
      }
    }
  } catch (const tarvox::cpp::ReaderException&) {
  }

  if (std::FILE* f = std::fopen(ScratchPath().c_str(), "wb")) {
    std::fwrite(data, 1, size, f);
    std::fclose(f);
    try {
      CAmr fromFile;
      if (fromFile.Load(ScratchPath().c_str())) fromFile.GetNumSamples();
      // One object for the run: constructing it searches for the decoder module every time.
      static CAac aac;
      if (aac.Load(ScratchPath().c_str())) {
        aac.GetNumSamples();
        aac.GetBitRate();
      }
    } catch (const tarvox::cpp::ReaderException&) {
    }
  }
  return 0;
}
