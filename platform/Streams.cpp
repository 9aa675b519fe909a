#include "handset/platform/Streams.h"

#include <cstdint>
#include <cstring>

#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace tarvox {
namespace cpp {

namespace {

const char kReadNoData[] =
    "'MemoryReader::readChar()' error: this object doesn't hold any 'char *'";
const char kReadPastEnd[] =
    "'MemoryReader::readLong()' error: error in moving past the end of internal buffer";
const char kAdvancePastEnd[] =
    "'MemoryReader::advance()' error: error in moving past the end of internal buffer";

// Large reads usually land in freshly allocated memory. Populating its pages in one call costs
// less than a page fault for each page while the data is copied in.
void PrepareLargeDestination(char* buffer, unsigned long n) {
#if defined(__linux__) && defined(MADV_POPULATE_WRITE)
  if (n < (1ul << 20)) return;
  const uintptr_t page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
  uintptr_t begin = (reinterpret_cast<uintptr_t>(buffer) + page - 1) & ~(page - 1);
  uintptr_t end = (reinterpret_cast<uintptr_t>(buffer) + n) & ~(page - 1);
  if (end > begin) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_POPULATE_WRITE);
#else
  (void)buffer;
  (void)n;
#endif
}

uint32_t Le32(const unsigned char* b) {
  return uint32_t{b[0]} | (uint32_t{b[1]} << 8) | (uint32_t{b[2]} << 16) | (uint32_t{b[3]} << 24);
}

}  // namespace

Reader::~Reader() = default;
Writer::~Writer() = default;

MemoryReader::MemoryReader(unsigned long size)
    : m_pData(size ? new char[size]() : nullptr),
      m_nSize(size),
      m_bOwnsData(size != 0),
      m_nPos(0) {}

MemoryReader::MemoryReader(const char* data, unsigned long size)
    : m_pData(const_cast<char*>(data)), m_nSize(data ? size : 0), m_bOwnsData(false), m_nPos(0) {}

MemoryReader::~MemoryReader() {
  if (m_bOwnsData) delete[] m_pData;
}

// The three typed reads share two texts on purpose: callers match on them.
void MemoryReader::check(unsigned long n) const {
  if (!m_pData) throw ReaderException(kReadNoData);
  if (n > m_nSize - m_nPos) throw ReaderException(kReadPastEnd);
}

char MemoryReader::readChar() {
  check(1);
  return m_pData[m_nPos++];
}

short MemoryReader::readShort() {
  check(2);
  const unsigned char* b = reinterpret_cast<const unsigned char*>(m_pData + m_nPos);
  m_nPos += 2;
  return static_cast<short>(static_cast<uint16_t>(b[0] | (b[1] << 8)));
}

long MemoryReader::readLong() {
  check(4);
  const unsigned char* b = reinterpret_cast<const unsigned char*>(m_pData + m_nPos);
  m_nPos += 4;
  return static_cast<long>(static_cast<int32_t>(Le32(b)));
}

unsigned long MemoryReader::read(char* buffer, unsigned long n) {
  if (!m_pData || !buffer) return 0;
  unsigned long left = m_nSize - m_nPos;
  if (n > left) n = left;
  if (n) std::memcpy(buffer, m_pData + m_nPos, n);
  m_nPos += n;
  return n;
}

bool MemoryReader::isEnd() const {
  return !m_pData || m_nPos >= m_nSize;
}

void MemoryReader::advance(unsigned long n) {
  if (n > m_nSize - m_nPos) {
    m_nPos = m_nSize;
    throw ReaderException(kAdvancePastEnd);
  }
  m_nPos += n;
}

MemoryWriter::MemoryWriter(unsigned long size)
    : m_pData(size ? new char[size]() : nullptr),
      m_nSize(size),
      m_bOwnsData(size != 0),
      m_nPos(0) {}

MemoryWriter::MemoryWriter(char* data, unsigned long size)
    : m_pData(data), m_nSize(data ? size : 0), m_bOwnsData(false), m_nPos(0) {}

MemoryWriter::~MemoryWriter() {
  if (m_bOwnsData) delete[] m_pData;
}

void MemoryWriter::put(const char* bytes, unsigned long n, const char* noDataText,
                       const char* pastEndText) {
  if (!m_pData) throw WriterException(noDataText);
  if (n > m_nSize - m_nPos) throw WriterException(pastEndText);
  if (n) std::memcpy(m_pData + m_nPos, bytes, n);
  m_nPos += n;
}

void MemoryWriter::write(const char ch) {
  put(&ch, 1, "'MemoryWriter::write(const char ch)' error: this object doesn't hold any 'char *'",
      "'MemoryWriter::write(const char ch)' error: error in moving past the end of internal "
      "buffer");
}

void MemoryWriter::write(const short sValue) {
  uint16_t v = static_cast<uint16_t>(sValue);
  const char b[2] = {static_cast<char>(v & 0xFF), static_cast<char>(v >> 8)};
  put(b, 2,
      "'MemoryWriter::write(const short sValue)' error: this object doesn't hold any 'char *'",
      "'MemoryWriter::write(const short sValue)' error: error in moving past the end of internal "
      "buffer");
}

void MemoryWriter::write(const long lValue) {
  uint32_t v = static_cast<uint32_t>(lValue);
  const char b[4] = {static_cast<char>(v & 0xFF), static_cast<char>((v >> 8) & 0xFF),
                     static_cast<char>((v >> 16) & 0xFF), static_cast<char>(v >> 24)};
  put(b, 4, "'MemoryWriter::write(const long lValue)' error: this object doesn't hold any 'char *'",
      "'MemoryWriter::write(const long lValue)' error: error in moving past the end of internal "
      "buffer");
}

void MemoryWriter::write(const char* data, unsigned long n) {
  put(data, n,
      "'MemoryWriter::write(const char* data, unsigned long n)' error: this object doesn't hold "
      "any 'char *'",
      "'MemoryWriter::write(const char* data, unsigned long n)' error: error in moving past the "
      "end of internal buffer");
}

FileReader::FileReader(const char* path) : m_pFile(nullptr), m_nSize(0), m_nPos(0) {
  if (!path) return;
  m_pFile = std::fopen(path, "rb");
  if (!m_pFile) return;
  // The size is taken once: the readers here treat the file as fixed while they hold it.
  if (std::fseek(m_pFile, 0, SEEK_END) != 0) {
    std::fclose(m_pFile);
    m_pFile = nullptr;
    return;
  }
  long end = std::ftell(m_pFile);
  if (end < 0 || std::fseek(m_pFile, 0, SEEK_SET) != 0) {
    std::fclose(m_pFile);
    m_pFile = nullptr;
    return;
  }
  m_nSize = static_cast<unsigned long>(end);
}

FileReader::~FileReader() {
  if (m_pFile) std::fclose(m_pFile);
}

void FileReader::seek(unsigned long offset) {
  if (!m_pFile) throw ReaderException("'FileReader::seek()' error: no file is open");
  if (offset > m_nSize || std::fseek(m_pFile, static_cast<long>(offset), SEEK_SET) != 0)
    throw ReaderException("'FileReader::seek()' error: error in moving past the end of file");
  m_nPos = offset;
}

void FileReader::readExactly(char* buffer, unsigned long n, const char* what) {
  if (!m_pFile) throw ReaderException(std::string(what) + " error: no file is open");
  if (read(buffer, n) != n)
    throw ReaderException(std::string(what) + " error: error in reading past the end of file");
}

char FileReader::readChar() {
  char c;
  readExactly(&c, 1, "'FileReader::readChar()'");
  return c;
}

short FileReader::readShort() {
  unsigned char b[2];
  readExactly(reinterpret_cast<char*>(b), 2, "'FileReader::readShort()'");
  return static_cast<short>(static_cast<uint16_t>(b[0] | (b[1] << 8)));
}

long FileReader::readLong() {
  unsigned char b[4];
  readExactly(reinterpret_cast<char*>(b), 4, "'FileReader::readLong()'");
  return static_cast<long>(static_cast<int32_t>(Le32(b)));
}

unsigned long FileReader::read(char* buffer, unsigned long n) {
  if (!m_pFile) throw ReaderException("'FileReader::read()' error: no file is open");
  if (!buffer || n == 0) return 0;
  PrepareLargeDestination(buffer, n);
  size_t got = std::fread(buffer, 1, n, m_pFile);
  if (got < n && std::ferror(m_pFile))
    throw ReaderException("'FileReader::read()' error: the file could not be read");
  m_nPos += static_cast<unsigned long>(got);
  return static_cast<unsigned long>(got);
}

bool FileReader::isEnd() const {
  return !m_pFile || m_nPos >= m_nSize;
}

void FileReader::advance(unsigned long n) {
  if (n > m_nSize - (m_nPos < m_nSize ? m_nPos : m_nSize))
    throw ReaderException("'FileReader::advance()' error: error in moving past the end of file");
  seek(m_nPos + n);
}

}  // namespace cpp
}  // namespace tarvox
