#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "handset/audio/ByteBlock.h"
#include "handset/platform/Streams.h"
#include "tests/TestUtil.h"

namespace {

using namespace tarvox::cpp;

const std::string kReadNoData =
    "'MemoryReader::readChar()' error: this object doesn't hold any 'char *'";
const std::string kReadPastEnd =
    "'MemoryReader::readLong()' error: error in moving past the end of internal buffer";
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

TEST(MemoryStreams, LittleEndianRoundTrip) {
  MemoryWriter w(7);
  w.write(static_cast<char>(-2));
  w.write(static_cast<short>(-12345));
  w.write(static_cast<long>(-123456789));
  EXPECT_EQ(static_cast<unsigned char>(w.getData()[1]), 0xC7);  // -12345 = 0xCFC7
  MemoryReader r(w.getData(), w.getSize());
  EXPECT_EQ(r.readChar(), -2);
  EXPECT_EQ(r.readShort(), -12345);
  EXPECT_EQ(r.readLong(), -123456789L);
  EXPECT_TRUE(r.isEnd());
}

TEST(MemoryStreams, ReaderFailuresAndTheirSharedTexts) {
  MemoryReader empty(nullptr, 10);
  EXPECT_TRUE(empty.isEnd());
  EXPECT_EQ(Thrown<ReaderException>([&] { empty.readChar(); }), kReadNoData);
  EXPECT_EQ(Thrown<ReaderException>([&] { empty.readShort(); }), kReadNoData);
  EXPECT_EQ(Thrown<ReaderException>([&] { empty.readLong(); }), kReadNoData);

  const char three[3] = {1, 2, 3};
  MemoryReader r(three, 3);
  EXPECT_EQ(Thrown<ReaderException>([&] { r.readLong(); }), kReadPastEnd);
  EXPECT_EQ(r.getPosition(), 0u);  // a refused read does not move
  r.readShort();
  EXPECT_EQ(Thrown<ReaderException>([&] { r.readShort(); }), kReadPastEnd);
  r.readChar();
  EXPECT_EQ(Thrown<ReaderException>([&] { r.readChar(); }), kReadPastEnd);

  MemoryReader owned(5);  // zeroed; bulk reads clip, advance clamps and then throws
  char buf[8] = {9, 9, 9, 9, 9, 9, 9, 9};
  owned.advance(2);
  EXPECT_EQ(owned.read(buf, 8), 3u);
  EXPECT_EQ(buf[0] + buf[3], 9);
  MemoryReader clamp(5);
  clamp.advance(3);
  EXPECT_EQ(Thrown<ReaderException>([&] { clamp.advance(3); }),
            "'MemoryReader::advance()" + kPastEnd);
  EXPECT_EQ(clamp.getPosition(), 5u);
}

TEST(MemoryStreams, WriterTextsPerOverloadAndNothingWrittenOnFailure) {
  MemoryWriter none(nullptr, 4);
  const std::string c = "'MemoryWriter::write(const char ch)";
  const std::string s = "'MemoryWriter::write(const short sValue)";
  const std::string l = "'MemoryWriter::write(const long lValue)";
  EXPECT_EQ(Thrown<WriterException>([&] { none.write('a'); }), c + kNoData);
  EXPECT_EQ(Thrown<WriterException>([&] { none.write(short{1}); }), s + kNoData);
  EXPECT_EQ(Thrown<WriterException>([&] { none.write(1L); }), l + kNoData);

  char block[3] = {0, 0, 0};
  MemoryWriter w(block, 3);
  w.write(short{0x0102});
  EXPECT_EQ(Thrown<WriterException>([&] { w.write(7L); }), l + kPastEnd);
  EXPECT_EQ(Thrown<WriterException>([&] { w.write(short{7}); }), s + kPastEnd);
  w.write('z');
  EXPECT_EQ(Thrown<WriterException>([&] { w.write('y'); }), c + kPastEnd);
  EXPECT_EQ(std::string(block, 3), std::string("\x02\x01z", 3));
}

TEST(FileReaderTest, ShortReadsAreCountsButSeeksAndTypedReadsThrow) {
  std::string path = hs::test::MakeTempDir("streams") + "/f.bin";
  std::ofstream(path, std::ios::binary) << "abcdef";
  FileReader f(path.c_str());
  ASSERT_TRUE(f.isOpen());
  char buf[10];
  EXPECT_EQ(f.read(buf, 10), 6u);
  EXPECT_THROW(f.readChar(), ReaderException);
  f.seek(4);
  EXPECT_EQ(f.readShort(), 'e' | ('f' << 8));
  EXPECT_THROW(f.seek(7), ReaderException);
  EXPECT_THROW(f.advance(1), ReaderException);
  FileReader missing((path + ".none").c_str());
  EXPECT_FALSE(missing.isOpen());
  EXPECT_THROW(missing.read(buf, 1), ReaderException);
}

TEST(ByteBlockTest, CopyInClipsAndHandOverMoves) {
  CByteBlock a(4), b, empty;
  uint32_t copied = 0;
  EXPECT_TRUE(a.CopyIn("0123456789", 2, 10, &copied));
  EXPECT_EQ(copied, 4u);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(a.GetData()), 4), "2345");
  EXPECT_FALSE(empty.CopyIn("x", 0, 1, &copied));
  EXPECT_FALSE(a.HandOver(a));
  EXPECT_TRUE(a.HandOver(b));
  EXPECT_EQ(a.GetData(), nullptr);
  EXPECT_EQ(b.GetSize(), 4u);
}

}  // namespace
