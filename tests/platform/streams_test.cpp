#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "handset/audio/ByteBlock.h"
#include "handset/platform/Streams.h"
#include "tests/TestUtil.h"

using tarvox::cpp::FileReader;
using tarvox::cpp::MemoryReader;
using tarvox::cpp::MemoryWriter;
using tarvox::cpp::ReaderException;
using tarvox::cpp::WriterException;

namespace {

const std::string kNoData =
    "'MemoryReader::readChar()' error: this object doesn't hold any 'char *'";
const std::string kPastEnd =
    "'MemoryReader::readLong()' error: error in moving past the end of internal buffer";

template <class F>
std::string ReaderError(F f) {
  try {
    f();
  } catch (const ReaderException& e) {
    return e.what();
  }
  return "no exception";
}

template <class F>
std::string WriterError(F f) {
  try {
    f();
  } catch (const WriterException& e) {
    return e.what();
  }
  return "no exception";
}

TEST(MemoryStreams, LittleEndianRoundTripThroughOwnedBlocks) {
  MemoryWriter w(7);
  w.write(static_cast<char>(-2));
  w.write(static_cast<short>(-12345));
  w.write(static_cast<long>(-123456789));
  EXPECT_EQ(w.getPosition(), 7u);
  EXPECT_EQ(static_cast<unsigned char>(w.getData()[1]), 0xC7);  // -12345 = 0xCFC7
  MemoryReader r(w.getData(), w.getSize());
  EXPECT_EQ(r.readChar(), -2);
  EXPECT_EQ(r.readShort(), -12345);
  EXPECT_EQ(r.readLong(), -123456789L);
  EXPECT_TRUE(r.isEnd());
}

TEST(MemoryStreams, TypedReadsShareTheirTwoTexts) {
  MemoryReader empty(nullptr, 10);
  EXPECT_TRUE(empty.isEnd());
  EXPECT_EQ(ReaderError([&] { empty.readChar(); }), kNoData);
  EXPECT_EQ(ReaderError([&] { empty.readShort(); }), kNoData);
  EXPECT_EQ(ReaderError([&] { empty.readLong(); }), kNoData);

  const char three[3] = {1, 2, 3};
  MemoryReader r(three, 3);
  EXPECT_EQ(ReaderError([&] { r.readLong(); }), kPastEnd);
  EXPECT_EQ(r.getPosition(), 0u);  // a refused read does not move
  r.readShort();
  EXPECT_EQ(ReaderError([&] { r.readShort(); }), kPastEnd);
  r.readChar();
  EXPECT_EQ(ReaderError([&] { r.readChar(); }), kPastEnd);
}

TEST(MemoryStreams, BulkReadClipsAndAdvanceClampsThenThrows) {
  MemoryReader r(5);  // owned, zeroed
  char buf[8] = {9, 9, 9, 9, 9, 9, 9, 9};
  r.advance(2);
  EXPECT_EQ(r.read(buf, 8), 3u);
  EXPECT_EQ(buf[0], 0);
  EXPECT_EQ(buf[3], 9);
  EXPECT_EQ(r.read(buf, 8), 0u);

  MemoryReader s(5);
  s.advance(3);
  EXPECT_EQ(ReaderError([&] { s.advance(3); }),
            "'MemoryReader::advance()' error: error in moving past the end of internal buffer");
  EXPECT_EQ(s.getPosition(), 5u);
  EXPECT_TRUE(s.isEnd());
}

TEST(MemoryStreams, WriterTextsPerOverloadAndNothingWrittenOnFailure) {
  MemoryWriter none(nullptr, 4);
  EXPECT_EQ(WriterError([&] { none.write('a'); }),
            "'MemoryWriter::write(const char ch)' error: this object doesn't hold any 'char *'");
  EXPECT_EQ(
      WriterError([&] { none.write(short{1}); }),
      "'MemoryWriter::write(const short sValue)' error: this object doesn't hold any 'char *'");
  EXPECT_EQ(
      WriterError([&] { none.write(1L); }),
      "'MemoryWriter::write(const long lValue)' error: this object doesn't hold any 'char *'");

  char block[3] = {0, 0, 0};
  MemoryWriter w(block, 3);
  w.write(short{0x0102});
  EXPECT_EQ(WriterError([&] { w.write(7L); }),
            "'MemoryWriter::write(const long lValue)' error: error in moving past the end of "
            "internal buffer");
  EXPECT_EQ(WriterError([&] { w.write(short{7}); }),
            "'MemoryWriter::write(const short sValue)' error: error in moving past the end of "
            "internal buffer");
  EXPECT_EQ(block[2], 0);
  w.write('z');
  EXPECT_EQ(WriterError([&] { w.write('y'); }),
            "'MemoryWriter::write(const char ch)' error: error in moving past the end of "
            "internal buffer");
  EXPECT_EQ(std::string(block, 3), std::string("\x02\x01z", 3));
}

TEST(FileReaderTest, ShortReadsAreCountsButSeeksAndTypedReadsThrow) {
  std::string path = hs::test::MakeTempDir("streams") + "/f.bin";
  std::ofstream(path, std::ios::binary) << "abcdef";
  FileReader f(path.c_str());
  ASSERT_TRUE(f.isOpen());
  EXPECT_EQ(f.size(), 6u);
  char buf[10];
  EXPECT_EQ(f.read(buf, 10), 6u);
  EXPECT_TRUE(f.isEnd());
  EXPECT_THROW(f.readChar(), ReaderException);
  f.seek(4);
  EXPECT_EQ(f.readShort(), 'e' | ('f' << 8));
  EXPECT_THROW(f.seek(7), ReaderException);
  f.seek(0);
  EXPECT_THROW(f.advance(7), ReaderException);

  FileReader missing((path + ".none").c_str());
  EXPECT_FALSE(missing.isOpen());
  EXPECT_THROW(missing.read(buf, 1), ReaderException);
}

TEST(ByteBlockTest, AttachCopyInAndHandOver) {
  CByteBlock a(4);
  const char src[] = "0123456789";
  uint32_t copied = 0;
  EXPECT_TRUE(a.CopyIn(src, 2, 10, &copied));
  EXPECT_EQ(copied, 4u);  // clipped to the block
  EXPECT_EQ(std::string(reinterpret_cast<char*>(a.GetData()), 4), "2345");

  CByteBlock empty;
  EXPECT_FALSE(empty.CopyIn(src, 0, 3, &copied));
  EXPECT_EQ(copied, 0u);

  CByteBlock b;
  EXPECT_FALSE(a.HandOver(a));
  EXPECT_TRUE(a.HandOver(b));
  EXPECT_EQ(a.GetData(), nullptr);
  EXPECT_EQ(a.GetSize(), 0u);
  EXPECT_EQ(b.GetSize(), 4u);

  b.Attach(new unsigned char[2]{7, 8}, 2);
  EXPECT_EQ(b.GetSize(), 2u);
  EXPECT_EQ(b.GetData()[1], 8);
}

}  // namespace
