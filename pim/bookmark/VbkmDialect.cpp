#include "handset/pim/VbkmDialect.h"

#include <cstring>
#include <memory>

#include "handset/pim/OemPanaVbkm.h"

VBKM_DIALECT _VBKM_DetectDialect(const char* text) {
  static const char kBrowserType[] = "X-S-BROWSERTYPE";
  if (!text) return VBKM_DIALECT_GENERIC;
  for (const char* p = text; (p = std::strstr(p, kBrowserType)) != nullptr; ++p)
    if (p == text || p[-1] == '\r' || p[-1] == '\n') return VBKM_DIALECT_OEM;
  return VBKM_DIALECT_GENERIC;
}

CVbkm* _VBKM_Create(VBKM_DIALECT dialect) {
  if (dialect == VBKM_DIALECT_OEM) return new COemPanaVbkm;
  return new CVbkm;
}

CVbkm* _VBKM_Parse(const char* text, bool lenient, VBKM_PARSE_RESULT* result) {
  VBKM_PARSE_RESULT local;
  VBKM_PARSE_RESULT& r = result ? *result : local;
  r = VBKM_PARSE_RESULT();
  if (!text) {
    r.errorCode = -1;
    r.error = "no text";
    return nullptr;
  }
  const VBKM_DIALECT detected = _VBKM_DetectDialect(text);
  r.dialect = detected;
  std::unique_ptr<CVbkm> kept;
  VBKM_PARSE_RESULT keptResult;
  for (VBKM_DIALECT d : {detected, VBKM_DIALECT_GENERIC}) {
    std::unique_ptr<CVbkm> v(_VBKM_Create(d));
    CString error;
    // Parsing reads the text and never writes to it.
    const bool ok = v->Parsing(const_cast<char*>(text), &error);
    const int code = v->GetErrorCode();
    if (ok || d == detected) {
      r.dialect = d;
      r.errorCode = code;
      r.error = ok ? CString() : error;
      r.setAside = v->GetSetAsideCount();
    }
    if (ok) return v.release();
    if (lenient && !kept && code == 0) {
      keptResult.dialect = d;
      keptResult.error = error;
      keptResult.setAside = v->GetSetAsideCount();
      kept = std::move(v);
    }
    // With every mandatory line present the generic dialect would only set one more line aside.
    // A missing line may mean the browser-type line only looked like one (it can stand inside a
    // joined quoted-printable value), and the generic reading is worth a try.
    if (d == VBKM_DIALECT_GENERIC || code == 0) break;
  }
  // A lenient reading reports what it set aside.
  if (kept) r = keptResult;
  return kept.release();
}
