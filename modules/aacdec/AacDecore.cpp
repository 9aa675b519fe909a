// The AAC decoder module: the command protocol of CAac over FAAD2.
#include <neaacdec.h>

#include <cstring>
#include <new>

#include "audio/aac/AacDecoreApi.h"

#if defined(_WIN32)
#define AACDECORE_EXPORT extern "C" __declspec(dllexport)
#else
#define AACDECORE_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

// ADTS frames can be up to 8191 bytes; offering less could cut a frame.
const int32_t kMinChunk = 8192;
const unsigned long kOutputPerChannel = 4096;

struct Decoder {
  NeAACDecHandle faad = nullptr;
  unsigned long channels = 0;
};

// The bit rate field of an ADIF header (bit/s); 0 for other streams or a short header.
int32_t AdifBitRate(const unsigned char* h, int32_t n) {
  if (n < 17 || std::memcmp(h, "ADIF", 4) != 0) return 0;
  // Bits after "ADIF": copyright_id_present (1) [copyright_id (72)], original_copy (1), home (1),
  // bitstream_type (1), bitrate (23).
  unsigned long bit = 32;
  auto get = [&](unsigned count) {
    unsigned long v = 0;
    for (unsigned i = 0; i < count; ++i, ++bit)
      v = (v << 1) | ((h[bit >> 3] >> (7 - (bit & 7))) & 1u);
    return v;
  };
  if (get(1)) bit += 72;
  bit += 3;
  return static_cast<int32_t>(get(23));
}

int Open(void** handle, AAC_DECORE_PARAM* p) {
  if (!p || !p->pHeader || p->nHeaderLen <= 0) return -1;
  Decoder* d = new (std::nothrow) Decoder;
  if (!d) return -1;
  d->faad = NeAACDecOpen();
  NeAACDecConfigurationPtr cfg = d->faad ? NeAACDecGetCurrentConfiguration(d->faad) : nullptr;
  if (!cfg) {
    if (d->faad) NeAACDecClose(d->faad);
    delete d;
    return -1;
  }
  cfg->defObjectType = LC;
  cfg->defSampleRate = p->nSampleRate > 0 ? static_cast<unsigned long>(p->nSampleRate) : 44100;
  cfg->outputFormat = FAAD_FMT_16BIT;
  cfg->downMatrix = 0;
  // Report the stream's own rate: a low-rate plain AAC stream stays at its rate.
  cfg->dontUpSampleImplicitSBR = 1;
  NeAACDecSetConfiguration(d->faad, cfg);
  unsigned long rate = 0;
  unsigned char channels = 0;
  long used = NeAACDecInit(d->faad, const_cast<unsigned char*>(p->pHeader),
                           static_cast<unsigned long>(p->nHeaderLen), &rate, &channels);
  if (used < 0 || channels == 0) {
    NeAACDecClose(d->faad);
    delete d;
    return -1;
  }
  d->channels = channels;
  p->nSampleRate = static_cast<int32_t>(rate);
  p->nChannels = channels;
  p->nBitRate = AdifBitRate(p->pHeader, p->nHeaderLen);
  p->nHeaderUsed = static_cast<int32_t>(used);
  p->nChunkLen = p->nChunkLen > kMinChunk ? p->nChunkLen : kMinChunk;
  *handle = d;
  return 0;
}

int DecodeFrame(Decoder* d, AAC_DECORE_FRAME* f) {
  if (!d || !f || !f->pInput || f->nInputLen <= 0 || !f->pOutput) return -1;
  f->nOutputBytes = 0;
  f->nInputUsed = 0;
  NeAACDecFrameInfo info;
  std::memset(&info, 0, sizeof info);
  void* samples = NeAACDecDecode(d->faad, &info, const_cast<unsigned char*>(f->pInput),
                                 static_cast<unsigned long>(f->nInputLen));
  if (info.error != 0) return static_cast<int>(info.error);
  unsigned long bytes = info.samples * 2;
  // The caller's frame buffer holds 4096 bytes per channel announced at open.
  if (bytes > d->channels * kOutputPerChannel) return -1;
  if (bytes && samples) std::memcpy(f->pOutput, samples, bytes);
  f->nOutputBytes = static_cast<int32_t>(samples ? bytes : 0);
  f->nInputUsed = static_cast<int32_t>(info.bytesconsumed);
  return 0;
}

}  // namespace

AACDECORE_EXPORT int AacDecore(void** handle, int command, void* param, void* work) {
  (void)work;
  if (!handle) return -1;
  switch (command) {
    case AACDECORE_OPEN:
      *handle = nullptr;
      return Open(handle, static_cast<AAC_DECORE_PARAM*>(param));
    case AACDECORE_DECODE:
      return DecodeFrame(static_cast<Decoder*>(*handle), static_cast<AAC_DECORE_FRAME*>(param));
    case AACDECORE_CLOSE: {
      Decoder* d = static_cast<Decoder*>(*handle);
      if (d) {
        NeAACDecClose(d->faad);
        delete d;
      }
      *handle = nullptr;
      return 0;
    }
    default:
      return -1;
  }
}
