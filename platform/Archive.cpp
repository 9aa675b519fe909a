#include "handset/platform/Archive.h"

#include <cstring>

CArchive::CArchive(std::vector<uint8_t>* buffer, Mode mode) : mode_(mode) {
  if (!buffer) {
    good_ = false;
    return;
  }
  if (mode == store) {
    out_ = buffer;
  } else {
    in_ = buffer->data();
    inSize_ = buffer->size();
  }
}

CArchive::CArchive(const void* data, size_t size)
    : mode_(load), in_(static_cast<const uint8_t*>(data)), inSize_(data ? size : 0) {}

CArchive::CArchive(const char* path, Mode mode) : mode_(mode) {
  file_ = path ? std::fopen(path, mode == load ? "rb" : "wb") : nullptr;
  if (!file_) good_ = false;
}

CArchive::~CArchive() {
  Close();
}

bool CArchive::Close() {
  if (file_) {
    if (std::fclose(file_) != 0) good_ = false;
    file_ = nullptr;
  }
  return good_;
}

size_t CArchive::Read(void* out, size_t n) {
  if (mode_ != load || n == 0) return 0;
  size_t got = 0;
  if (file_) {
    got = std::fread(out, 1, n, file_);
  } else if (in_) {
    got = n <= inSize_ - inPos_ ? n : inSize_ - inPos_;
    std::memcpy(out, in_ + inPos_, got);
    inPos_ += got;
  }
  if (got < n) {
    std::memset(static_cast<uint8_t*>(out) + got, 0, n - got);
    good_ = false;
  }
  return got;
}

void CArchive::Write(const void* data, size_t n) {
  if (mode_ != store) {
    good_ = false;
    return;
  }
  if (n == 0) return;
  if (file_) {
    if (std::fwrite(data, 1, n, file_) != n) good_ = false;
  } else if (out_) {
    const uint8_t* b = static_cast<const uint8_t*>(data);
    out_->insert(out_->end(), b, b + n);
  } else {
    good_ = false;
  }
}

CArchive& CArchive::operator<<(uint8_t v) {
  Write(&v, 1);
  return *this;
}
CArchive& CArchive::operator<<(uint16_t v) {
  uint8_t b[2] = {uint8_t(v), uint8_t(v >> 8)};
  Write(b, 2);
  return *this;
}
CArchive& CArchive::operator<<(uint32_t v) {
  uint8_t b[4] = {uint8_t(v), uint8_t(v >> 8), uint8_t(v >> 16), uint8_t(v >> 24)};
  Write(b, 4);
  return *this;
}
CArchive& CArchive::operator>>(uint8_t& v) {
  Read(&v, 1);
  return *this;
}
CArchive& CArchive::operator>>(int8_t& v) {
  uint8_t u;
  *this >> u;
  v = static_cast<int8_t>(u);
  return *this;
}
CArchive& CArchive::operator>>(uint16_t& v) {
  uint8_t b[2];
  Read(b, 2);
  v = static_cast<uint16_t>(b[0] | (b[1] << 8));
  return *this;
}
CArchive& CArchive::operator>>(int16_t& v) {
  uint16_t u;
  *this >> u;
  v = static_cast<int16_t>(u);
  return *this;
}
CArchive& CArchive::operator>>(uint32_t& v) {
  uint8_t b[4];
  Read(b, 4);
  v = uint32_t{b[0]} | (uint32_t{b[1]} << 8) | (uint32_t{b[2]} << 16) | (uint32_t{b[3]} << 24);
  return *this;
}
CArchive& CArchive::operator>>(int32_t& v) {
  uint32_t u;
  *this >> u;
  v = static_cast<int32_t>(u);
  return *this;
}

void CArchive::WriteString(const char* data, size_t length) {
  if (length < 0xFF) {
    *this << static_cast<uint8_t>(length);
  } else if (length < 0xFFFE) {
    *this << static_cast<uint8_t>(0xFF) << static_cast<uint16_t>(length);
  } else {
    *this << static_cast<uint8_t>(0xFF) << static_cast<uint16_t>(0xFFFF)
          << static_cast<uint32_t>(length);
  }
  Write(data, length);
}

bool CArchive::ReadString(CString& s) {
  s.clear();
  uint8_t b = 0;
  *this >> b;
  uint32_t length = b;
  if (b == 0xFF) {
    uint16_t w = 0;
    *this >> w;
    length = w;
    if (w == 0xFFFE) {  // a wide-string marker; this archive holds byte strings only
      good_ = false;
      return false;
    }
    if (w == 0xFFFF) *this >> length;
  }
  if (!good_) return false;
  // Read in bounded pieces so a corrupt length cannot make us allocate gigabytes up front.
  char chunk[4096];
  while (length > 0 && good_) {
    size_t n = length < sizeof(chunk) ? length : sizeof(chunk);
    size_t got = Read(chunk, n);
    s.append(chunk, got);
    length -= static_cast<uint32_t>(n);
  }
  if (!good_) s.clear();
  return good_;
}
