#pragma once

#include "handset/export.h"

/// A phone number kept normalised: only its decimal digits and '+' signs, in order, at most 65
/// characters. Construction and assignment from text always normalise.
class HANDSET_API CGsmPhoneNo {
 public:
  static constexpr int kMaxLength = 65;

  CGsmPhoneNo() { m_szNumber[0] = '\0'; }
  CGsmPhoneNo(const char* text);
  CGsmPhoneNo(const CGsmPhoneNo& other) = default;
  CGsmPhoneNo& operator=(const CGsmPhoneNo& other) = default;
  CGsmPhoneNo& operator=(const char* text);
  bool operator==(const CGsmPhoneNo& other) const;
  bool operator==(const char* text) const;
  operator char*() { return m_szNumber; }
  operator const char*() const { return m_szNumber; }
  bool IsEmpty() const { return m_szNumber[0] == '\0'; }
  void Empty() { m_szNumber[0] = '\0'; }

  /// The digits and '+' signs of `text` (null is ""), at most 65 of them, in one static buffer
  /// that every call shares: copy the result before the next call; not for concurrent use.
  static const char* Normalize(const char* text);

 private:
  char m_szNumber[kMaxLength + 1];
};
