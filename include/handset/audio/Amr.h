#pragma once

#include "handset/audio/ByteBlock.h"
#include "handset/export.h"

/// An AMR speech file in memory: the storage type, the channel count and the frame data without
/// the storage header. Files are read through the codec library's file reader, whose
/// ReaderException (a failed read or seek) is not caught here and reaches the caller.
class HANDSET_API CAmr {
 public:
  /// Storage headers by type: 1 single-channel NB, 2 single-channel WB, 3 multichannel NB,
  /// 4 multichannel WB (the last two are followed by a 32-bit big-endian channel description).
  static const char SingleChannelAmrNBHeader[];
  static const char SingleChannelAmrWBHeader[];
  static const char MultipleChannelAmrNBHeader[];
  static const char MultipleChannelAmrWBHeader[];
  /// Speech bits per frame type (bits 6..3 of a frame's header byte); used for all four types.
  static const short NBspeechBits[16];

  CAmr();
  virtual ~CAmr();
  CAmr(const CAmr&) = delete;
  CAmr& operator=(const CAmr&) = delete;

  /// Compares the first bytes of `path` with the NB, WB, NB multichannel and WB multichannel
  /// headers, in that order; the first match sets `type` (1..4) and gives true. A file that
  /// cannot be opened, or matches none, gives false.
  static bool IsAmrFormat(const char* path, short& type);
  /// Loads the frame data of `path`. The multichannel types load 28 bytes less than the file
  /// holds after its header (the last 28 bytes are left out). False when the file is not AMR or
  /// holds no frame data.
  bool Load(const char* path);
  /// Writes the type's header (and for types 3 and 4 the channel description) and the frame
  /// data. False without data, with a type outside 1..4 or when the file cannot be written.
  bool Save(const char* path) const;
  /// Sets `out` to `type`, `channels` and `size` bytes of `data`: copied when `copy`, otherwise
  /// `out` takes ownership of `data`, which must come from new[] of a byte type. Returns true.
  static bool ConstructAmrObject(unsigned short type, unsigned short channels, void* data,
                                 unsigned long size, CAmr& out, bool copy);

  /// Frees the data and clears type and channels.
  void Release();
  const unsigned char* GetBuffer() const { return m_Data.GetData(); }
  unsigned long GetBufferLength() const { return m_Data.GetSize(); }
  int GetNumChannels() const { return m_nChannels; }
  /// 0 when nothing is loaded, else 1..4.
  int GetAmrType() const { return m_nType; }

  /// Number of frames (one per 20 ms); every channel of a step is taken to have the first
  /// channel's frame type. 0 without data or channels.
  unsigned long GetNumSamples() const;
  /// Playing time in seconds: frames x 0.02.
  double GetAmrLength() const;
  /// Bytes one channel occupies: data length / channels (0 without data or channels).
  unsigned long GetSingleChannelSize() const;
  /// Copies the frames of `channel` (0-based) to `out`, which holds GetSingleChannelSize()
  /// bytes. False without data, for a channel out of range, or when the frames run past the
  /// data.
  bool GetSingleChannel(unsigned short channel, char* out) const;
  /// File size of a recording of `milliseconds`: 6-byte NB header plus one 32-byte
  /// 12.2 kbit/s frame per 20 ms.
  static unsigned long GetEstiFileSize(unsigned long milliseconds);

 protected:
  int m_nType;
  int m_nChannels;
  CByteBlock m_Data;
};
