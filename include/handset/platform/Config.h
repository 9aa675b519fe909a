#pragma once

#include <cstdint>

#include "handset/export.h"
#include "handset/platform/Strings.h"

/// Configuration the host sets after loading the library and before calling it.

/// The suite's registry root below HKEY_CURRENT_USER (on POSIX: the key prefix in the profile
/// store). Contact groups live below it.
extern HANDSET_API char g_szRegRootPath[260];
/// The resource language; "Arabic" lays message boxes out right-to-left.
extern HANDSET_API CString g_strRCLanguageID;
/// Resource charset and font height, kept for the dialogs.
extern HANDSET_API uint8_t g_byteRCCharset;
extern HANDSET_API int g_intRCFontHeightMinus;
/// The skin module handle (opaque to this library).
extern HANDSET_API void* g_hSkinInstance;
/// 1 (default) lets the MP3 rows into the format tables when an MP3 codec is installed.
extern HANDSET_API int32_t g_bMP3GlobalOn;
/// Nonzero enables GIF and TIFF in the image tables.
extern HANDSET_API int32_t g_gif_tiff_enable;

/// The MP3 toolbox: only its codec check is used here.
class HANDSET_API CMP3Toolbox {
 public:
  /// True when an MP3 decoder library (libmpg123 on POSIX, the system ACM codec on Windows) can
  /// be loaded at run time. The answer is computed once per process.
  static bool IsCodecInstalled();
};
