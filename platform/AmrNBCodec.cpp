#include "handset/platform/AmrNBCodec.h"

#include <cstring>
#include <string>

#include "platform/CodecModules.h"
#include "platform/Os.h"

namespace hs {
namespace codec {
namespace {
std::string& AmrName() {
  static std::string name = "opencore-amrnb";
  return name;
}
std::string& AacName() {
  static std::string name = "M4aacDec";
  return name;
}
}  // namespace

void SetAmrNbModuleName(const char* base) {
  AmrName() = base ? base : "opencore-amrnb";
}
const char* AmrNbModuleName() {
  return AmrName().c_str();
}
void SetAacModuleName(const char* base) {
  AacName() = base ? base : "M4aacDec";
}
const char* AacModuleName() {
  return AacName().c_str();
}

}  // namespace codec
}  // namespace hs

namespace tarvox {
namespace cpp {

namespace {

const int kSamplesPerFrame = 160;
const int kMode122 = 7;  // 12.2 kbit/s, the mode phones record in
const char kHeader[] = "#!AMR\n";

// Storage frame size (header byte included) by frame type: speech bits rounded up to bytes, plus
// the header byte; reserved types and NO_DATA carry no speech.
int FrameBytes(unsigned char header) {
  static const short kBits[16] = {95, 103, 118, 134, 148, 159, 204, 244,
                                  39, 43,  38,  37,  -1,  -1,  -1,  0};
  short bits = kBits[(header & 0x78) >> 3];
  return bits >= 1 ? (bits + 7) / 8 + 1 : 1;
}

// The codec's entry points, resolved from the run-time module.
struct AmrNb {
  hs::os::Module module;
  void* (*encInit)(int dtx) = nullptr;
  int (*encode)(void*, int mode, const short* speech, unsigned char* out, int force) = nullptr;
  void (*encExit)(void*) = nullptr;
  void* (*decInit)() = nullptr;
  void (*decode)(void*, const unsigned char* in, short* out, int bfi) = nullptr;
  void (*decExit)(void*) = nullptr;

  bool Load() {
    if (!module.Open(hs::codec::AmrNbModuleName())) return false;
    encInit = reinterpret_cast<decltype(encInit)>(module.Symbol("Encoder_Interface_init"));
    encode = reinterpret_cast<decltype(encode)>(module.Symbol("Encoder_Interface_Encode"));
    encExit = reinterpret_cast<decltype(encExit)>(module.Symbol("Encoder_Interface_exit"));
    decInit = reinterpret_cast<decltype(decInit)>(module.Symbol("Decoder_Interface_init"));
    decode = reinterpret_cast<decltype(decode)>(module.Symbol("Decoder_Interface_Decode"));
    decExit = reinterpret_cast<decltype(decExit)>(module.Symbol("Decoder_Interface_exit"));
    return encInit && encode && encExit && decInit && decode && decExit;
  }
};

// Frees a codec state however the function that uses it is left (stream exceptions included).
struct State {
  void* p;
  void (*exit)(void*);
  ~State() {
    if (p) exit(p);
  }
};

}  // namespace

bool AmrNBCodec::isAvailable() {
  AmrNb codec;
  return codec.Load();
}

bool AmrNBCodec::encodeAmrStorageFromPCM(Reader& pcm, Writer& amr) {
  AmrNb codec;
  if (!codec.Load()) return false;
  State enc{codec.encInit(0), codec.encExit};
  if (!enc.p) return false;
  bool any = false;
  for (;;) {
    unsigned char raw[kSamplesPerFrame * 2] = {0};
    unsigned long got = pcm.read(reinterpret_cast<char*>(raw), sizeof raw);
    if (got == 0) break;
    if (!any) amr.write(kHeader, 6);
    any = true;
    short speech[kSamplesPerFrame];
    for (int i = 0; i < kSamplesPerFrame; ++i)
      speech[i] = static_cast<short>(static_cast<uint16_t>(raw[2 * i] | (raw[2 * i + 1] << 8)));
    unsigned char frame[64];
    int n = codec.encode(enc.p, kMode122, speech, frame, 0);
    if (n <= 0 || n > static_cast<int>(sizeof frame)) return false;
    amr.write(reinterpret_cast<const char*>(frame), static_cast<unsigned long>(n));
    if (got < sizeof raw) break;
  }
  return any;
}

bool AmrNBCodec::decodeAmrStorageToPCM(Reader& amr, Writer& pcm) {
  AmrNb codec;
  if (!codec.Load()) return false;
  char head[6];
  if (amr.read(head, 6) != 6 || std::memcmp(head, kHeader, 6) != 0) return false;
  State dec{codec.decInit(), codec.decExit};
  if (!dec.p) return false;
  for (;;) {
    unsigned char frame[64] = {0};
    if (amr.read(reinterpret_cast<char*>(frame), 1) != 1) break;
    unsigned long rest = static_cast<unsigned long>(FrameBytes(frame[0]) - 1);
    if (rest && amr.read(reinterpret_cast<char*>(frame + 1), rest) != rest) break;
    short speech[kSamplesPerFrame];
    codec.decode(dec.p, frame, speech, 0);
    char out[kSamplesPerFrame * 2];
    for (int i = 0; i < kSamplesPerFrame; ++i) {
      uint16_t v = static_cast<uint16_t>(speech[i]);
      out[2 * i] = static_cast<char>(v & 0xFF);
      out[2 * i + 1] = static_cast<char>(v >> 8);
    }
    pcm.write(out, sizeof out);
  }
  return true;
}

}  // namespace cpp
}  // namespace tarvox
