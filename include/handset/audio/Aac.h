#pragma once

#include <cstdint>

#include "handset/audio/ByteBlock.h"
#include "handset/export.h"
#include "handset/platform/WaveFormat.h"

/// An AAC file in ADIF or ADTS form (behind an optional ID3v2 tag) in memory, decoded through
/// the AAC decoder module loaded at run time. Without the module, ADTS files are still
/// recognised and measured, ADIF files are not recognised and Decode fails. Files are read
/// through the codec library's file reader, whose ReaderException is not caught here.
class HANDSET_API CAac {
 public:
  /// Loads the decoder module and looks up its entry; construction succeeds without it.
  CAac();
  virtual ~CAac();
  CAac(const CAac&) = delete;
  CAac& operator=(const CAac&) = delete;

  /// True when the decoder module loads and exports its entry (it is released again).
  static bool IsAACDllLoad();
  /// Recognises the file, skipping an ID3v2 tag: ADIF (its header opened by the decoder gives
  /// channels, sample rate, play length and bit rate) sets `type` 1; an ADTS sync of 0xFF 0xF9 or
  /// 0xFF 0xF8 (0xF1 and 0xF0 are refused) sets `type` 2 with channels and sample rate from the
  /// frame header. False otherwise.
  bool IsAACFormat(const char* path, short& type);
  /// Recognises `path` and loads everything after its ID3v2 tag. False when the file is not
  /// AAC or nothing follows the tag.
  bool Load(const char* path);

  int GetAACType() const { return m_nType; }
  int GetNumChannels() const { return m_nChannels; }
  int GetSamplingFreq() const { return m_nSampleRate; }
  const unsigned char* GetBuffer() const { return m_Data.GetData(); }
  unsigned long GetBufferLength() const { return m_Data.GetSize(); }

  /// Number of 1024-sample frames: counted for ADTS, sample rate x play length / 1024 for ADIF.
  unsigned long GetNumSamples() const;
  /// Seconds: frames x 1024 / sample rate for ADTS, the header's play length for ADIF.
  double GetAACLength() const;
  /// Bit rate in units of 1024 bit/s: the whole file's for ADTS, the header's for ADIF.
  unsigned long GetBitRate() const;
  /// Decodes the whole data to 16-bit PCM. On success fills `format`, sets `*pcm` to a buffer
  /// the caller frees with delete[] and `*length` to its byte count. A decoding error shows a
  /// message box and keeps the frames decoded before it. False without data or decoder.
  bool Decode(WAVEFORMATEX* format, unsigned char** pcm, int* length) const;

 protected:
  void* m_hDecoderLib;
  void* m_pfnAacDecore;
  int m_nType;
  int m_nChannels;
  CByteBlock m_Data;
  unsigned long m_nHeaderSkip;
  int m_nSampleRate;
  double m_dPlayLength;
  uint16_t m_wBitRate;
};
