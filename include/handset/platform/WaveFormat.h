#pragma once

// The wave format record of the system's multimedia API; defined here where the system has none.
#if defined(_WIN32)
#include <mmreg.h>
#include <windows.h>
#else
#include <cstdint>

#pragma pack(push, 1)
/// PCM and compressed wave format description (18 bytes, packed like the system's record).
typedef struct tWAVEFORMATEX {
  uint16_t wFormatTag;  ///< 1 = PCM
  uint16_t nChannels;
  uint32_t nSamplesPerSec;
  uint32_t nAvgBytesPerSec;  ///< nBlockAlign * nSamplesPerSec
  uint16_t nBlockAlign;      ///< nChannels * wBitsPerSample / 8
  uint16_t wBitsPerSample;
  uint16_t cbSize;  ///< bytes of extra format information that follow; 0 for PCM
} WAVEFORMATEX;
#pragma pack(pop)

#ifndef WAVE_FORMAT_PCM
#define WAVE_FORMAT_PCM 1
#endif
#endif
