#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "handset/audio/ByteBlock.h"
#include "handset/platform/Streams.h"
#include "tests/TestUtil.h"

namespace {

using namespace tarvox::cpp;

const std::string kNoData = "' error: this object doesn't hold any 'char *'";
const std::string kPastEnd = "' error: error in moving past the end of internal buffer";

template <class E, class F>
std::string Thrown(F f) {
  try {
    f();
  } catch (const E& e) {
    return e.what();
  }
  return "no exception";
}

TEST(MemoryStreams, LittleEndianRoundTripAndWriterFailures) {
  char block[7];
  MemoryWriter w(block, 7);
  w.write(static_cast<char>(-2));
  w.write(static_cast<short>(-12345));
  w.write(static_cast<long>(-123456789));
  EXPECT_EQ(static_cast<unsigned char>(block[1]), 0xC7);  // -12345 = 0xCFC7
  const std::string c = "'MemoryWriter::write(const char ch)";
  const std::string s = "'MemoryWriter::write(const short sValue)";
  const std::string l = "'MemoryWriter::write(const long lValue)";
  EXPECT_EQ(Thrown<WriterException>([&] { w.write('y'); }), c + kPastEnd);
  MemoryWriter none(nullptr, 4);
  EXPECT_EQ(Thrown<WriterException>([&] { none.write(short{1}); }), s + kNoData);
  EXPECT_EQ(Thrown<WriterException>([&] { none.write(1L); }), l + kNoData);
  MemoryWriter three(3);
  three.write(short{1});
  EXPECT_EQ(Thrown<WriterException>([&] { three.write(7L); }), l + kPastEnd);
  EXPECT_EQ(three.getPosition(), 2u);  // nothing of a refused write lands

  MemoryReader r(block, 7);
  EXPECT_EQ(r.readChar(), -2);
  EXPECT_EQ(r.readShort(), -12345);
  EXPECT_EQ(r.readLong(), -123456789L);
  EXPECT_TRUE(r.isEnd());
}

TEST(MemoryStreams, TypedReadsShareTwoTextsAndAdvanceClamps) {
  const std::string noData = "'MemoryReader::readChar()" + kNoData;
  const std::string pastEnd = "'MemoryReader::readLong()" + kPastEnd;
  MemoryReader empty(nullptr, 10);
  EXPECT_EQ(Thrown<ReaderException>([&] { empty.readShort(); }), noData);
  EXPECT_EQ(Thrown<ReaderException>([&] { empty.readLong(); }), noData);
  MemoryReader r(3);  // owned and zeroed
  EXPECT_EQ(Thrown<ReaderException>([&] { r.readLong(); }), pastEnd);
  r.readShort();
  EXPECT_EQ(Thrown<ReaderException>([&] { r.readShort(); }), pastEnd);
  char buf[4] = {9, 9, 9, 9};
  EXPECT_EQ(r.read(buf, 4), 1u);  // bulk reads clip
  EXPECT_EQ(Thrown<ReaderException>([&] { r.readChar(); }), pastEnd);
  MemoryReader a(5);
  a.advance(3);
  EXPECT_EQ(Thrown<ReaderException>([&] { a.advance(3); }), "'MemoryReader::advance()" + kPastEnd);
  EXPECT_EQ(a.getPosition(), 5u);
}

TEST(FileReaderTest, ShortReadsAreCountsButSeeksAndTypedReadsThrow) {
  std::string path = hs::test::MakeTempDir("streams") + "/f.bin";
  std::ofstream(path, std::ios::binary) << "abcdef";
  FileReader f(path.c_str());
  char buf[10];
  EXPECT_EQ(f.read(buf, 10), 6u);
  EXPECT_THROW(f.readChar(), ReaderException);
  f.seek(4);
  EXPECT_EQ(f.readShort(), 'e' | ('f' << 8));
  EXPECT_THROW(f.seek(7), ReaderException);
  FileReader missing((path + ".none").c_str());
  EXPECT_FALSE(missing.isOpen());
  EXPECT_THROW(missing.read(buf, 1), ReaderException);
}

TEST(ByteBlockTest, CopyInClipsAndHandOverMoves) {
  CByteBlock a(4), b, empty;
  uint32_t copied = 0;
  EXPECT_TRUE(a.CopyIn("0123456789", 2, 10, &copied));
  EXPECT_EQ(std::string(reinterpret_cast<char*>(a.GetData()), copied), "2345");
  EXPECT_FALSE(empty.CopyIn("x", 0, 1, &copied));
  EXPECT_FALSE(a.HandOver(a));
  EXPECT_TRUE(a.HandOver(b));
  EXPECT_EQ(a.GetData(), nullptr);
  EXPECT_EQ(b.GetSize(), 4u);
}

}  // namespace
