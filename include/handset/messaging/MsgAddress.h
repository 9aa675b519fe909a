#pragma once

#include "handset/export.h"

/// A mail-like address kept normalised: its bytes below 128 that are not control characters, at
/// most 128 of them. Construction and assignment from text always normalise.
class HANDSET_API CMsgAddress {
 public:
  static constexpr int kMaxLength = 128;

  CMsgAddress() { m_szAddress[0] = '\0'; }
  CMsgAddress(const char* text);
  CMsgAddress(const CMsgAddress& other) = default;
  CMsgAddress& operator=(const CMsgAddress& other) = default;
  CMsgAddress& operator=(const char* text);
  bool operator==(const CMsgAddress& other) const;
  bool operator==(const char* text) const;
  operator char*() { return m_szAddress; }
  operator const char*() const { return m_szAddress; }
  bool IsEmpty() const { return m_szAddress[0] == '\0'; }
  void Empty() { m_szAddress[0] = '\0'; }

  /// The kept bytes of `text` (null is ""), at most 128, in one static buffer that every call
  /// shares: copy the result before the next call; not for concurrent use.
  static const char* Normalize(const char* text);

 private:
  char m_szAddress[kMaxLength + 1];
};
