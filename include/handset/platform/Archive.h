#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "handset/export.h"
#include "handset/platform/Strings.h"

/// A little-endian binary archive over memory or a file, storing or loading. Reads past the end
/// return zeros and set a sticky error flag (`IsGood()` turns false); nothing throws.
///
/// Strings use the framework's archive format: the byte length as one byte when below 255;
/// otherwise 0xFF and a 16-bit length when below 0xFFFE; otherwise 0xFF, 0xFFFF and a 32-bit
/// length; then the bytes, without a terminator.
class HANDSET_API CArchive {
 public:
  enum Mode { store = 0, load = 1 };

  /// Memory archive. Storing appends to `*buffer`; loading reads `*buffer` from the start. The
  /// buffer is borrowed and must outlive the archive.
  CArchive(std::vector<uint8_t>* buffer, Mode mode);
  /// Memory archive that loads from a borrowed byte range.
  CArchive(const void* data, size_t size);
  /// File archive: "rb" for loading, "wb" for storing. `IsGood()` is false when it cannot open.
  CArchive(const char* path, Mode mode);
  ~CArchive();
  CArchive(const CArchive&) = delete;
  CArchive& operator=(const CArchive&) = delete;

  bool IsLoading() const { return mode_ == load; }
  bool IsStoring() const { return mode_ == store; }
  bool IsGood() const { return good_; }
  /// Flushes and closes a file archive; false when anything failed.
  bool Close();

  /// Raw bytes. `Read` returns the count read (short at the end, which also clears IsGood).
  size_t Read(void* out, size_t n);
  void Write(const void* data, size_t n);

  CArchive& operator<<(uint8_t v);
  CArchive& operator<<(int8_t v) { return *this << static_cast<uint8_t>(v); }
  CArchive& operator<<(uint16_t v);
  CArchive& operator<<(int16_t v) { return *this << static_cast<uint16_t>(v); }
  CArchive& operator<<(uint32_t v);
  CArchive& operator<<(int32_t v) { return *this << static_cast<uint32_t>(v); }
  CArchive& operator<<(const CString& s) {
    WriteString(s);
    return *this;
  }
  CArchive& operator>>(uint8_t& v);
  CArchive& operator>>(int8_t& v);
  CArchive& operator>>(uint16_t& v);
  CArchive& operator>>(int16_t& v);
  CArchive& operator>>(uint32_t& v);
  CArchive& operator>>(int32_t& v);
  CArchive& operator>>(CString& s) {
    ReadString(s);
    return *this;
  }

  void WriteString(const char* data, size_t length);
  void WriteString(const CString& s) { WriteString(s.data(), s.size()); }
  /// False (and `s` empty) when the length prefix or the bytes run past the end.
  bool ReadString(CString& s);

 private:
  Mode mode_;
  bool good_ = true;
  std::vector<uint8_t>* out_ = nullptr;
  const uint8_t* in_ = nullptr;
  size_t inSize_ = 0;
  size_t inPos_ = 0;
  std::FILE* file_ = nullptr;
};
