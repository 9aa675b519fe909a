#include <gtest/gtest.h>

#include "platform/ByteReader.h"
#include "platform/ByteWriter.h"

namespace {

TEST(ByteReader, ReadsBothByteOrdersAndStopsAtTheEnd) {
  const uint8_t data[] = {0x12, 0x34, 0x56, 0x78, 0x9A};
  hs::ByteReader r(data, sizeof data);
  EXPECT_EQ(r.u16be(), 0x1234);
  EXPECT_EQ(r.u16le(), 0x7856);
  EXPECT_TRUE(r.ok());
  EXPECT_EQ(r.u32be(), 0u);  // only one byte left
  EXPECT_TRUE(r.overrun());
  EXPECT_TRUE(r.atEnd());
  EXPECT_EQ(r.u8(), 0);  // the flag is sticky and the reader stays at the end
  EXPECT_FALSE(r.ok());
}

TEST(ByteReader, VariableLengthNumbers) {
  const uint8_t ok[] = {0x81, 0x80, 0x00, 0x7F, 0xFF, 0xFF, 0xFF, 0x7F};
  hs::ByteReader r(ok, sizeof ok);
  EXPECT_EQ(r.vlq(), 0x4000u);
  EXPECT_EQ(r.vlq(), 0x7Fu);
  EXPECT_EQ(r.vlq(), 0x0FFFFFFFu);
  EXPECT_TRUE(r.ok());

  const uint8_t cut[] = {0x81, 0x80};  // continuation bit set on the last byte
  hs::ByteReader c(cut, sizeof cut);
  EXPECT_EQ(c.vlq(), 0u);
  EXPECT_TRUE(c.overrun());
}

TEST(ByteReader, SubRangesNeverReachPastTheParent) {
  const uint8_t data[] = {'M', 'T', 'r', 'k', 0, 0, 0, 9, 1, 2};
  hs::ByteReader r(data, sizeof data);
  EXPECT_TRUE(r.expect("MTrk", 4));
  uint32_t len = r.u32be();
  hs::ByteReader body = r.sub(len);
  EXPECT_EQ(body.size(), 2u);
  EXPECT_TRUE(r.overrun());
  EXPECT_EQ(body.u16be(), 0x0102);
  EXPECT_TRUE(body.ok());
  EXPECT_EQ(body.bytes(1), nullptr);

  hs::ByteReader empty(nullptr, 100);
  EXPECT_EQ(empty.size(), 0u);
  EXPECT_EQ(empty.fourcc(), "");
}

TEST(ByteWriter, LengthFieldsAndCapacity) {
  hs::ByteWriter w;
  w.fourcc("MTrk");
  size_t at = w.placeholder32();
  w.vlq(0x4000);
  w.vlq(0);
  w.closeLength32be(at);
  const std::vector<uint8_t> expect = {'M', 'T', 'r', 'k', 0, 0, 0, 4, 0x81, 0x80, 0x00, 0x00};
  EXPECT_EQ(w.buffer(), expect);

  hs::ByteWriter small(5);
  EXPECT_TRUE(small.u32le(1));
  EXPECT_FALSE(small.u16le(2));  // would pass the capacity: nothing written
  EXPECT_EQ(small.size(), 4u);
  EXPECT_FALSE(small.u8(3));  // sticky
  EXPECT_TRUE(small.overflow());
}

}  // namespace
