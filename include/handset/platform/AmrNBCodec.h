#pragma once

#include "handset/export.h"
#include "handset/platform/Streams.h"

namespace tarvox {
namespace cpp {

/// AMR narrow-band speech codec over the byte streams. The codec itself (opencore-amrnb) is
/// loaded at run time; when it cannot be loaded both operations return false and touch no
/// stream. Stream exceptions (ReaderException, WriterException) pass through to the caller.
class HANDSET_API AmrNBCodec {
 public:
  /// Encodes 16-bit little-endian mono PCM at 8000 Hz, read from `pcm` until it ends, into an
  /// AMR storage file written to `amr`: the "#!AMR\n" header, then one 12.2 kbit/s frame per 160
  /// samples (a last partial frame is padded with silence). False when the codec is missing or
  /// there are no samples.
  static bool encodeAmrStorageFromPCM(Reader& pcm, Writer& amr);
  /// Decodes a single-channel AMR-NB storage file read from `amr` to 16-bit little-endian mono
  /// PCM at 8000 Hz written to `pcm`, 160 samples per frame. A frame cut short by the end of the
  /// input is dropped. False when the codec is missing or the header is not "#!AMR\n".
  static bool decodeAmrStorageToPCM(Reader& amr, Writer& pcm);
  /// True when the codec can be loaded.
  static bool isAvailable();
};

}  // namespace cpp
}  // namespace tarvox
