#pragma once

#include <cstddef>
#include <cstdint>

#include "handset/export.h"
#include "handset/pim/Vbkm.h"

/// The vBookmark dialects: the generic one (`CVbkm`) and the one with a browser type
/// (`COemPanaVbkm`).
enum VBKM_DIALECT : int32_t {
  VBKM_DIALECT_GENERIC = 0,
  VBKM_DIALECT_OEM = 1,
};

/// What `_VBKM_Parse` found.
struct HANDSET_API VBKM_PARSE_RESULT {
  VBKM_DIALECT dialect = VBKM_DIALECT_GENERIC;  ///< of the object returned, else of the text
  int errorCode = 0;    ///< the parser's `GetErrorCode()`: -1 - index of a missing row, or 0
  CString error;        ///< the parser's reason; "" on success
  size_t setAside = 0;  ///< lines the dialect does not know
};

/// The dialect `text` is written in: VBKM_DIALECT_OEM when a line begins with "X-S-BROWSERTYPE",
/// VBKM_DIALECT_GENERIC otherwise (null included).
HANDSET_API VBKM_DIALECT _VBKM_DetectDialect(const char* text);
/// A new, empty object of `dialect`; the caller deletes it.
HANDSET_API CVbkm* _VBKM_Create(VBKM_DIALECT dialect);
/// Reads a vBookmark of either dialect from `text` (NUL-terminated): the dialect is detected and
/// the text parsed once with it; a text detected as VBKM_DIALECT_OEM that lacks one of that
/// dialect's mandatory lines is read as the generic dialect too. With `lenient`, an object whose
/// mandatory lines are all present is returned even though lines the dialect does not know were
/// set aside. Returns a new object (the caller deletes it), or null; `result` (may be null) says
/// which dialect and, on failure, why.
HANDSET_API CVbkm* _VBKM_Parse(const char* text, bool lenient, VBKM_PARSE_RESULT* result);
