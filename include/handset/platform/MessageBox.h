#pragma once

#include "handset/export.h"

/// Message-box flags the library passes (a subset of the usual values).
enum : unsigned {
  HS_MB_OK = 0x0,
  HS_MB_ICONERROR = 0x10,
  HS_MB_ICONWARNING = 0x30,
  HS_MB_RTLREADING = 0x100000,  ///< set when the resource language is "Arabic"
};

/// Host handler for the library's message boxes. `flags` carries HS_MB_RTLREADING when the text
/// must be laid out right-to-left. Returns the pressed button (1 for OK).
typedef int (*HsMessageBoxHandler)(const char* text, const char* caption, unsigned flags,
                                   void* user);

/// Installs the handler (null restores the default, which writes the text to standard error).
HANDSET_API void HsSetMessageBoxHandler(HsMessageBoxHandler handler, void* user);
/// Shows a message box through the installed handler, adding HS_MB_RTLREADING when
/// `g_strRCLanguageID` equals "Arabic". Returns the handler's answer.
HANDSET_API int HsMessageBox(const char* text, const char* caption, unsigned flags);
