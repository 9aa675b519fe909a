#pragma once

#include <cstdint>

#include "handset/export.h"
#include "handset/platform/Strings.h"

/// Bit set of melody and audio formats. A value may hold several bits when the exact kind is not
/// known (a ".mid" file may be GMIDI or SPMIDI).
typedef uint32_t MDYFMT;

enum : uint32_t {
  MDYFMT_NONE = 0x0,
  MDYFMT_LEGACY = 0x1,
  MDYFMT_IMELODY = 0x2,
  MDYFMT_EMELODY = 0x4,
  MDYFMT_GMIDI = 0x8,
  MDYFMT_SPMIDI = 0x10,
  MDYFMT_MMF_MA2 = 0x20,
  MDYFMT_MMF_MA3 = 0x40,
  MDYFMT_WAVE = 0x80,
  MDYFMT_AMR = 0x100,
  MDYFMT_MIF = 0x200,
  MDYFMT_XMI = 0x400,
  MDYFMT_AUF = 0x800,
  MDYFMT_XAU = 0x1000,
  MDYFMT_MP3 = 0x2000,
  MDYFMT_MMF_MA5 = 0x4000,
  MDYFMT_3GP = 0x10000,
  MDYFMT_EXT_HIGH = 0x100000,
  MDYFMT_EXT_MID = 0x200000,
  MDYFMT_EXT_LOW = 0x400000,
  /// Some standard MIDI file.
  MDYFMT_ANY_MIDI = MDYFMT_GMIDI | MDYFMT_SPMIDI,
  /// Some SMAF file.
  MDYFMT_ANY_MMF = MDYFMT_MMF_MA2 | MDYFMT_MMF_MA3 | MDYFMT_MMF_MA5,
};

/// One row of a format table.
struct MELODY_FORMAT_TABLE {
  CString strFmtName;      ///< short name, e.g. "GMIDI"
  CString strFilter;       ///< file patterns joined by "|", e.g. "*.mid|*.midi"
  CString strDescription;  ///< display text from the string resources
  uint32_t dwMdyFmt;       ///< the row's format (0 for the closing all-formats row)
};

/// Melody formats; rows in use (closing row included) in g_nMelodyFmtCount.
extern HANDSET_API MELODY_FORMAT_TABLE g_MelodyFormatArray[16];
extern HANDSET_API int g_nMelodyFmtCount;
/// Auxiliary sampled-audio formats; rows in use in g_nAUXAudioFmtCount.
extern HANDSET_API MELODY_FORMAT_TABLE g_AUXAudioFormatArray[7];
extern HANDSET_API int g_nAUXAudioFmtCount;
/// Audio formats an MMS may carry; filled by the messaging media-format initialisation.
extern HANDSET_API MELODY_FORMAT_TABLE g_MMSAudioFormatArray[16];
extern HANDSET_API int g_nMMSAudioFmtCount;

/// Fill the melody table and its count (call once at start-up; calling again rebuilds it).
HANDSET_API void InitialMelodyFormatArray();
/// Fill the auxiliary audio table and its count.
HANDSET_API void InitialAudioFormatArray();
/// 1 when g_bMP3GlobalOn is set and an MP3 codec is installed, else 0.
HANDSET_API int IsMP3Enabled();

/// Format of the first melody row named `name` (case ignored), closing row included; 0 if none.
HANDSET_API MDYFMT GetMDYFMTByMdyName(const char* name);
/// Format of the first auxiliary row named `name` (case ignored); 0 if none.
HANDSET_API MDYFMT GetMDYFMTByAuxName(const char* name);
/// OR of the formats of every melody row whose filter's extension equals the path's.
HANDSET_API MDYFMT GetMDYFMTByMdyFileType(const char* path);
/// Format of the first auxiliary row whose filter's extension equals the path's; 0 if none.
HANDSET_API MDYFMT GetMDYFMTByAuxFileType(const char* path);
/// First melody row (closing row excluded) whose format equals `fmt` exactly; null if none.
HANDSET_API MELODY_FORMAT_TABLE* GetMdyTableByFmt(MDYFMT fmt);
/// First auxiliary row (closing row excluded) whose format equals `fmt` exactly; null if none.
HANDSET_API MELODY_FORMAT_TABLE* GetAuxMdyTableByFmt(MDYFMT fmt);
/// Melody format from a file's first bytes ("MThd", "MMMD", "RIFF"); `length` must exceed 4.
HANDSET_API MDYFMT GetMdyFmtByMdyDataCont(const unsigned char* data, int length);
/// Auxiliary format from a file's first bytes ("RIFF", the AMR magics).
HANDSET_API MDYFMT GetMdyFmtByAuxDataCont(const unsigned char* data, int length);
/// GetMDYFMTByMdyFileType, or when that is 0, GetMDYFMTByAuxFileType.
HANDSET_API MDYFMT _IsMelodyFormatType(const char* path);
/// As _IsMelodyFormatType; when that gives 0 and `bReadContent` is nonzero, the file's first 20
/// bytes decide (0 when it cannot be opened).
HANDSET_API MDYFMT _GetSoundFileFormatType(const char* path, int bReadContent);
/// OR of the formats of every MMS audio row whose filter's extension equals the path's.
HANDSET_API MDYFMT _IsMmsMdyFormatType(const char* path);
/// The format's text names, each followed by "," ("GMIDI,SPMIDI," for 0x18).
HANDSET_API CString TransToMdyFormatSTR(MDYFMT fmt);
/// The OR of the bits named by the comma-separated `text` (names compared exactly).
HANDSET_API MDYFMT MdyFormatSTRToRawMdyFmt(const char* text);
