#include <gtest/gtest.h>

#include <memory>

#include "handset/pim/MediaFile.h"

namespace {

TEST(MediaFile, PacksUnderThePrefixAndKeepsWhatIsAbsent) {
  CMediaFile f("song.mid");
  f.m_strFilePath = "/media/tones";
  f.m_dwFileSize = 0x01020304;
  f.m_tModified = -2;
  CPackageBlk blk;
  EXPECT_EQ(f.PackData("x.", blk, true), 1);
  const auto& e = blk.Entries();
  EXPECT_EQ(e.at("x.m_strFileName"),
            std::vector<uint8_t>({'s', 'o', 'n', 'g', '.', 'm', 'i', 'd', 0}));
  EXPECT_EQ(e.at("x.m_dwFileSize"), std::vector<uint8_t>({4, 3, 2, 1}));
  EXPECT_EQ(e.at("x.m_tModified"), std::vector<uint8_t>({0xFE, 0xFF, 0xFF, 0xFF}));
  EXPECT_EQ(e.count("x.m_strFilePath"), 1u);
  CPackageBlk noPath;
  f.PackData(nullptr, noPath, false);
  EXPECT_EQ(noPath.Entries().count("m_strFilePath"), 0u);

  CUnpackageBlk un(blk);
  CMediaFile back;
  back.m_strFilePath = "old";
  EXPECT_EQ(back.UnpackData("x.", un, false), 1);  // the folder is not read without the flag
  EXPECT_EQ(back.m_strFileName, "song.mid");
  EXPECT_EQ(back.m_strFilePath, "old");
  EXPECT_EQ(back.m_dwFileSize, 0x01020304u);
  EXPECT_EQ(back.m_tModified, -2);
  back.UnpackData("x.", un, true);
  EXPECT_EQ(back.m_strFilePath, "/media/tones");
  std::unique_ptr<CMediaFile> clone(back.Clone());
  EXPECT_EQ(clone->m_strFilePath, "/media/tones");
}

}  // namespace
