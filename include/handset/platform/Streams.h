#pragma once

#include <cstdio>
#include <stdexcept>
#include <string>

#include "handset/export.h"

// Byte streams of the codec library. Integers are little-endian on both sides; a `long` travels
// as 4 bytes whatever the width of `long` on the platform (it is sign-extended when read).
namespace tarvox {
namespace cpp {

/// Thrown by readers: a read or seek that cannot be satisfied. `what()` is the exact text.
class HANDSET_API ReaderException : public std::runtime_error {
 public:
  explicit ReaderException(const std::string& text) : std::runtime_error(text) {}
};

/// Thrown by writers: a write without a buffer or past its end. `what()` is the exact text.
class HANDSET_API WriterException : public std::runtime_error {
 public:
  explicit WriterException(const std::string& text) : std::runtime_error(text) {}
};

/// A source of bytes.
class HANDSET_API Reader {
 public:
  virtual ~Reader();
  /// Typed reads advance by 1, 2 or 4 bytes; they throw ReaderException when the bytes are not
  /// there.
  virtual char readChar() = 0;
  virtual short readShort() = 0;
  virtual long readLong() = 0;
  /// Reads up to `n` bytes into `buffer`, clipped to what is left; returns the count read.
  virtual unsigned long read(char* buffer, unsigned long n) = 0;
  /// True when nothing is left to read.
  virtual bool isEnd() const = 0;
  /// Moves forward by `n` bytes; moving past the end throws ReaderException.
  virtual void advance(unsigned long n) = 0;
};

/// A sink of bytes.
class HANDSET_API Writer {
 public:
  virtual ~Writer();
  /// Typed writes advance by 1, 2 or 4 bytes; they throw WriterException when there is no
  /// buffer or no room, writing nothing.
  virtual void write(const char ch) = 0;
  virtual void write(const short sValue) = 0;
  virtual void write(const long lValue) = 0;
  /// Writes `n` bytes, all or nothing (WriterException when they do not fit).
  virtual void write(const char* data, unsigned long n) = 0;
};

/// Reader over one byte block in memory.
class HANDSET_API MemoryReader : public Reader {
 public:
  /// Allocates and owns a zeroed block of `size` bytes (nothing for 0).
  explicit MemoryReader(unsigned long size);
  /// Reads the caller's block in place (no copy); the caller keeps it alive and owns it.
  MemoryReader(const char* data, unsigned long size);
  ~MemoryReader() override;
  MemoryReader(const MemoryReader&) = delete;
  MemoryReader& operator=(const MemoryReader&) = delete;

  char readChar() override;
  short readShort() override;
  long readLong() override;
  unsigned long read(char* buffer, unsigned long n) override;
  /// True when there is no data or the position has reached the size.
  bool isEnd() const override;
  /// Past the end, the position is set to the size and ReaderException is thrown.
  void advance(unsigned long n) override;

  char* getData() const { return m_pData; }
  unsigned long getSize() const { return m_nSize; }
  unsigned long getPosition() const { return m_nPos; }

 private:
  void check(unsigned long n) const;

  char* m_pData;
  unsigned long m_nSize;
  bool m_bOwnsData;
  unsigned long m_nPos;
};

/// Writer into one byte block in memory; the block never grows.
class HANDSET_API MemoryWriter : public Writer {
 public:
  /// Allocates and owns a zeroed block of `size` bytes (nothing for 0).
  explicit MemoryWriter(unsigned long size);
  /// Writes into the caller's block in place; the caller keeps it alive and owns it.
  MemoryWriter(char* data, unsigned long size);
  ~MemoryWriter() override;
  MemoryWriter(const MemoryWriter&) = delete;
  MemoryWriter& operator=(const MemoryWriter&) = delete;

  void write(const char ch) override;
  void write(const short sValue) override;
  void write(const long lValue) override;
  void write(const char* data, unsigned long n) override;

  char* getData() const { return m_pData; }
  unsigned long getSize() const { return m_nSize; }
  /// Bytes written so far.
  unsigned long getPosition() const { return m_nPos; }

 private:
  void put(const char* bytes, unsigned long n, const char* noDataText, const char* pastEndText);

  char* m_pData;
  unsigned long m_nSize;
  bool m_bOwnsData;
  unsigned long m_nPos;
};

/// Reader over a file opened for binary reading. A file that cannot be opened gives a closed
/// reader (`isOpen()` false) on which every read throws. Reads and seeks that fail throw
/// ReaderException; a bulk read that meets the end of the file just returns fewer bytes.
class HANDSET_API FileReader : public Reader {
 public:
  explicit FileReader(const char* path);
  ~FileReader() override;
  FileReader(const FileReader&) = delete;
  FileReader& operator=(const FileReader&) = delete;

  bool isOpen() const { return m_pFile != nullptr; }
  /// The file's size in bytes, measured when it was opened.
  unsigned long size() const { return m_nSize; }
  unsigned long tell() const { return m_nPos; }
  /// Moves to an absolute offset; beyond the end of the file throws.
  void seek(unsigned long offset);

  char readChar() override;
  short readShort() override;
  long readLong() override;
  unsigned long read(char* buffer, unsigned long n) override;
  bool isEnd() const override;
  void advance(unsigned long n) override;

 private:
  void readExactly(char* buffer, unsigned long n, const char* what);

  std::FILE* m_pFile;
  unsigned long m_nSize;
  unsigned long m_nPos;
};

}  // namespace cpp
}  // namespace tarvox
