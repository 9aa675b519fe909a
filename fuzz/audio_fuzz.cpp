#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <unistd.h>

#include "audio/aac/AdtsFrames.h"
#include "audio/amr/AmrFrames.h"
#include "handset/audio.h"
#include "handset/platform/Streams.h"

namespace {

// The file-based readers are driven through one scratch file per process, in memory where the
// system offers a folder for it (rewriting a disk file forces a write-back on every close).
const std::string& ScratchPath() {
  static const std::string path = (std::filesystem::is_directory("/dev/shm")
                                       ? std::string("/dev/shm")
                                       : std::filesystem::temp_directory_path().string()) +
                                  "/handset-audio-fuzz-" + std::to_string(getpid()) + ".bin";
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
      char buf[16];
      int op = r.readChar() & 3;
      if (op == 0) r.readShort();
      if (op == 1) r.readLong();
      if (op == 2) r.read(buf, sizeof buf);
      if (op == 3) r.advance(static_cast<unsigned char>(r.readChar()));
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
