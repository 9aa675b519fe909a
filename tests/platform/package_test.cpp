#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "handset/platform/Archive.h"
#include "handset/platform/PackageBlk.h"

namespace {

TEST(PackageBlk, RoundTripOfRandomKeysAndValues) {
  std::mt19937 gen(7);
  for (int round = 0; round < 20; ++round) {
    CPackageBlk blk;
    std::map<std::string, std::vector<uint8_t>> expect;
    int n = static_cast<int>(gen() % 40);
    for (int i = 0; i < n; ++i) {
      std::string key = ".m_" + std::to_string(gen() % 1000) + "[" + std::to_string(i) + "]";
      std::vector<uint8_t> value(gen() % 300);  // includes empty values
      for (auto& b : value) b = static_cast<uint8_t>(gen());
      blk.Add(key.c_str(), value.data(), static_cast<uint32_t>(value.size()));
      expect[key] = value;
    }
    std::vector<uint8_t> bytes = blk.Serialize();
    CUnpackageBlk un;
    ASSERT_TRUE(un.Unpack(bytes.data(), bytes.size()));
    EXPECT_EQ(un.GetCount(), static_cast<int>(expect.size()));
    for (const auto& e : expect) {
      const void* data = nullptr;
      uint32_t size = 99;
      ASSERT_TRUE(un.GetData(e.first.c_str(), &data, &size)) << e.first;
      ASSERT_EQ(size, e.second.size());
      if (size) {
        EXPECT_EQ(0, std::memcmp(data, e.second.data(), size));
      }
    }
    EXPECT_FALSE(un.GetData("absent", nullptr, nullptr));
  }
}

TEST(PackageBlk, TypedValuesFollowTheRecordConventions) {
  CPackageBlk blk;
  blk.AddInt(".m_nBeginPos", -2);
  blk.AddString(".m_szName", nullptr);
  blk.AddString(".m_szTitle", "News");
  CUnpackageBlk un(blk);
  const void* data;
  uint32_t size;
  ASSERT_TRUE(un.GetData(".m_nBeginPos", &data, &size));
  EXPECT_EQ(size, 4u);
  EXPECT_EQ(0, std::memcmp(data, "\xFE\xFF\xFF\xFF", 4));
  ASSERT_TRUE(un.GetData(".m_szName", &data, &size));
  EXPECT_EQ(size, 1u);  // a null text is one NUL
  int32_t v = 0;
  EXPECT_TRUE(un.GetInt(".m_nBeginPos", &v));
  EXPECT_EQ(v, -2);
  EXPECT_FALSE(un.GetInt(".m_szTitle", &v));  // not four bytes
  char small[3];
  EXPECT_TRUE(un.CopyString(".m_szTitle", small, sizeof small));
  EXPECT_STREQ(small, "Ne");  // cut to the field, never past it
}

TEST(PackageBlk, EveryTruncationAndBitFlipIsRejected) {
  CPackageBlk blk;
  blk.AddString("a", "alpha");
  blk.AddInt("b", 42);
  blk.Add("c", "\0\1\2", 3);
  std::vector<uint8_t> bytes = blk.Serialize();
  for (size_t len = 0; len < bytes.size(); ++len) {
    CUnpackageBlk un;
    std::vector<uint8_t> cut(bytes.begin(), bytes.begin() + static_cast<long>(len));
    EXPECT_FALSE(un.Unpack(cut.data(), cut.size())) << len;
    EXPECT_EQ(un.GetCount(), 0);
  }
  for (size_t i = 0; i < bytes.size(); ++i) {
    std::vector<uint8_t> bad = bytes;
    bad[i] ^= 0x10;
    CUnpackageBlk un;
    EXPECT_FALSE(un.Unpack(bad.data(), bad.size())) << i;
  }
}

TEST(Archive, StringLengthPrefixesAndIntegers) {
  std::vector<uint8_t> buf;
  {
    CArchive ar(&buf, CArchive::store);
    ar << uint32_t{0x01020304} << int16_t{-1};
    ar.WriteString(CString(254, 'a'));
    ar.WriteString(CString(255, 'b'));
    ar.WriteString(CString(0x10000, 'c'));
  }
  ASSERT_EQ(buf.size(), 4u + 2 + (1 + 254) + (3 + 255) + (7 + 0x10000));
  EXPECT_EQ(buf[0], 0x04);  // little-endian
  EXPECT_EQ(buf[6], 254);
  EXPECT_EQ(buf[6 + 255], 0xFF);
  EXPECT_EQ(buf[6 + 255 + 1], 0xFF);  // 255 as a 16-bit length
  EXPECT_EQ(buf[6 + 255 + 2], 0x00);

  CArchive in(&buf, CArchive::load);
  uint32_t u;
  int16_t s;
  CString a, b, c;
  in >> u >> s >> a >> b >> c;
  EXPECT_TRUE(in.IsGood());
  EXPECT_EQ(u, 0x01020304u);
  EXPECT_EQ(s, -1);
  EXPECT_EQ(a.size(), 254u);
  EXPECT_EQ(b, CString(255, 'b'));
  EXPECT_EQ(c.size(), 0x10000u);
  in >> u;
  EXPECT_FALSE(in.IsGood());  // past the end

  const uint8_t cut[] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F, 'x'};  // claims 2 GiB
  CArchive bad(cut, sizeof cut);
  CString t;
  EXPECT_FALSE(bad.ReadString(t));
  EXPECT_TRUE(t.empty());
}

}  // namespace
