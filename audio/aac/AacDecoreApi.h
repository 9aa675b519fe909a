#pragma once

#include <cstdint>

// The calling convention of the run-time AAC decoder module, shared by CAac and the module this
// project ships. All fields are 32-bit except pointers, which take the platform's pointer size.

/// Commands of the entry point.
enum : int {
  AACDECORE_OPEN = 0,    ///< open a decoder on header bytes; `param` is an AAC_DECORE_PARAM
  AACDECORE_DECODE = 1,  ///< decode one frame; `param` is an AAC_DECORE_FRAME
  AACDECORE_CLOSE = 3,   ///< close the decoder; `param` may be null
};

/// Parameter record of the open command (14 fields by position).
typedef struct {
  int32_t nVersion;              ///< 0: always 1
  const unsigned char* pHeader;  ///< 1: the first bytes of the AAC data
  int32_t nHeaderLen;            ///< 2: their count (100)
  int32_t nReserved3;
  int32_t nReserved4;
  int32_t nBitRate;     ///< 5: returned, bit/s (0 when the stream does not say)
  int32_t nSampleRate;  ///< 6: proposed (44100), returned
  int32_t nChannels;    ///< 7: proposed (1), returned in the low 16 bits
  int32_t nReserved8;
  int32_t nReserved9;
  int32_t nReserved10;
  int32_t nChunkLen;    ///< 11: input bytes to offer per frame: proposed (1500), returned
  int32_t nHeaderUsed;  ///< 12: header bytes consumed, returned
  int32_t nReserved13;
} AAC_DECORE_PARAM;

/// Parameter record of the decode command. The output buffer holds channels x 4096 bytes.
typedef struct {
  const unsigned char* pInput;
  int32_t nInputLen;
  unsigned char* pOutput;
  int32_t nOutputBytes;  ///< returned: bytes of 16-bit PCM written
  int32_t nInputUsed;    ///< returned: input bytes consumed
} AAC_DECORE_FRAME;

/// The entry point "AacDecore": a handle slot (filled by open, read by the other commands), a
/// command, its parameter record and a work area (unused, may be null). Returns 0 on success.
extern "C" typedef int (*AacDecoreProc)(void** handle, int command, void* param, void* work);
