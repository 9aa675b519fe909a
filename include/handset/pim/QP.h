#pragma once

#include <cstddef>

#include "handset/export.h"

/// The quoted-printable coder shared by the vObject and mail readers.
///
/// One object holds at most one result: every call frees the previous one, and the returned
/// pointer stays valid until the next call on the same object or its destruction.
class HANDSET_API CQP {
 public:
  CQP() = default;
  ~CQP();
  CQP(const CQP&) = delete;
  CQP& operator=(const CQP&) = delete;

  /// Decodes `text`. Only upper-case hex digits form an escape ("=3d" is not one: the '=' is
  /// dropped and "3d" kept); "=" CR LF is a soft line break and is dropped. Returns null for a
  /// null argument or when an escape is cut short by the end of the text.
  const char* Decode(const char* text);
  /// Encodes `text` without soft line breaks. A byte below 0x10 other than CR and LF is written
  /// as '=', one hex digit and a NUL, so the encoded text ends there. Null for a null argument.
  const char* Encode(const char* text);
  /// Length of the last result up to its terminating NUL (0 when there is none).
  size_t GetLength() const { return m_nLength; }

 protected:
  void _Reset();
  bool _Reserve(size_t size);

 private:
  char* m_pBuffer = nullptr;
  size_t m_nCapacity = 0;
  size_t m_nLength = 0;
};
