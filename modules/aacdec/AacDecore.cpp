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
  unsigned long channels = 0;  // as reported to the caller
};

// Reads bits most significant first; reads past the end give zeros.
class Bits {
 public:
  Bits(const unsigned char* data, int32_t size) : data_(data), size_(size > 0 ? size : 0) {}
  unsigned long Get(unsigned count) {
    unsigned long v = 0;
    for (unsigned i = 0; i < count; ++i, ++bit_) {
      unsigned long byte = bit_ >> 3;
      unsigned b =
          byte < static_cast<unsigned long>(size_) ? (data_[byte] >> (7 - (bit_ & 7))) & 1u : 0;
      v = (v << 1) | b;
    }
    return v;
  }
  void Skip(unsigned long count) { bit_ += count; }

 private:
  const unsigned char* data_;
  int32_t size_;
  unsigned long bit_ = 0;
};

// What the stream's own header says: bit rate (ADIF only) and channel count (0 when unknown).
struct StreamInfo {
  int32_t bitRate = 0;
  unsigned channels = 0;
};

StreamInfo ReadHeader(const unsigned char* h, int32_t n) {
  StreamInfo info;
  Bits b(h, n);
  if (n >= 4 && std::memcmp(h, "ADIF", 4) == 0) {
    b.Skip(32);
    if (b.Get(1)) b.Skip(72);  // copyright id
    b.Skip(2);                 // original_copy, home
    bool constantRate = b.Get(1) == 0;
    info.bitRate = static_cast<int32_t>(b.Get(23));
    b.Skip(4);                     // number of program config elements - 1: the first one is read
    if (constantRate) b.Skip(20);  // buffer fullness
    // The first program's channel elements: front, side, back (a pair element is two channels)
    // and LFE.
    b.Skip(4 + 2 + 4);  // instance tag, object type, sampling-frequency index
    unsigned front = static_cast<unsigned>(b.Get(4)), side = static_cast<unsigned>(b.Get(4));
    unsigned back = static_cast<unsigned>(b.Get(4)), lfe = static_cast<unsigned>(b.Get(2));
    b.Skip(3 + 4);            // associated data and coupling element counts
    if (b.Get(1)) b.Skip(4);  // mono mixdown
    if (b.Get(1)) b.Skip(4);  // stereo mixdown
    if (b.Get(1)) b.Skip(3);  // matrix mixdown
    unsigned channels = lfe;
    for (unsigned i = 0; i < front + side + back; ++i) {
      channels += b.Get(1) ? 2 : 1;
      b.Skip(4);
    }
    info.channels = channels;
  } else if (n >= 4 && h[0] == 0xFF && (h[1] & 0xF0) == 0xF0) {
    unsigned config = ((h[2] & 1u) << 2) | (h[3] >> 6);
    info.channels = config == 7 ? 8 : config;
  }
  return info;
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
  // FAAD2 announces a mono stream as stereo (in case parametric stereo turns up) and then
  // doubles every sample; the header's own count is reported instead and the copy dropped.
  StreamInfo header = ReadHeader(p->pHeader, p->nHeaderLen);
  d->channels = header.channels == 1 ? 1 : channels;
  p->nSampleRate = static_cast<int32_t>(rate);
  p->nChannels = static_cast<int32_t>(d->channels);
  p->nBitRate = header.bitRate;
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
  unsigned long bytes = samples ? info.samples * 2 : 0;
  const short* pcm = static_cast<const short*>(samples);
  if (d->channels == 1 && info.channels == 2) {
    bytes /= 2;
    // The caller's frame buffer holds 4096 bytes per channel announced at open.
    if (bytes > kOutputPerChannel) return -1;
    short* out = reinterpret_cast<short*>(f->pOutput);
    for (unsigned long i = 0; i < bytes / 2; ++i) out[i] = pcm[2 * i];
  } else {
    if (info.channels != d->channels || bytes > d->channels * kOutputPerChannel) return -1;
    if (bytes) std::memcpy(f->pOutput, samples, bytes);
  }
  f->nOutputBytes = static_cast<int32_t>(bytes);
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
