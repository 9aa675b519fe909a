#include "handset/messaging/GsmPhoneNo.h"

#include <cstring>

#include "messaging/sms/SmIo.h"

constexpr int CGsmPhoneNo::kMaxLength;

const char* CGsmPhoneNo::Normalize(const char* text) {
  static char buffer[kMaxLength + 1];
  int n = 0;
  for (const char* p = text; p && *p && n < kMaxLength; ++p)
    if ((*p >= '0' && *p <= '9') || *p == '+') buffer[n++] = *p;
  buffer[n] = '\0';
  return buffer;
}

CGsmPhoneNo::CGsmPhoneNo(const char* text) {
  hs::sms::CopyCut(m_szNumber, Normalize(text), kMaxLength);
}

CGsmPhoneNo& CGsmPhoneNo::operator=(const char* text) {
  hs::sms::CopyCut(m_szNumber, Normalize(text), kMaxLength);
  return *this;
}

bool CGsmPhoneNo::operator==(const CGsmPhoneNo& other) const {
  return std::strcmp(m_szNumber, other.m_szNumber) == 0;
}

bool CGsmPhoneNo::operator==(const char* text) const {
  return std::strcmp(m_szNumber, Normalize(text)) == 0;
}
