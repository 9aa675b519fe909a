#include "handset/messaging/MsgAddress.h"

#include <cstring>

#include "messaging/sms/SmIo.h"

constexpr int CMsgAddress::kMaxLength;

const char* CMsgAddress::Normalize(const char* text) {
  static char buffer[kMaxLength + 1];
  int n = 0;
  for (const unsigned char* p = reinterpret_cast<const unsigned char*>(text);
       p && *p && n < kMaxLength; ++p)
    if (*p < 128 && *p >= 0x20 && *p != 0x7F) buffer[n++] = static_cast<char>(*p);
  buffer[n] = '\0';
  return buffer;
}

CMsgAddress::CMsgAddress(const char* text) {
  hs::sms::CopyCut(m_szAddress, Normalize(text), kMaxLength);
}

CMsgAddress& CMsgAddress::operator=(const char* text) {
  hs::sms::CopyCut(m_szAddress, Normalize(text), kMaxLength);
  return *this;
}

bool CMsgAddress::operator==(const CMsgAddress& other) const {
  return std::strcmp(m_szAddress, other.m_szAddress) == 0;
}

bool CMsgAddress::operator==(const char* text) const {
  return std::strcmp(m_szAddress, Normalize(text)) == 0;
}
