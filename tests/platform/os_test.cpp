#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <set>

#include "handset/platform.h"
#include "platform/Os.h"
#include "tests/TestUtil.h"

namespace {

TEST(Strings, FileTypeAndTokens) {
  EXPECT_EQ(GetFileType("song.MMF"), "MMF");
  EXPECT_EQ(GetFileType("*.mid|*.midi"), "midi");
  EXPECT_EQ(GetFileType("noext"), "");
  EXPECT_EQ(GetFileType("dir.d/noext"), "");
  EXPECT_EQ(GetFileType(nullptr), "");
  CxStringList list;
  EXPECT_EQ(list.AddTokens("a,,b;c", ",;"), 3);
  EXPECT_EQ(list.AddTokens("x,", ",", true), 2);
  EXPECT_EQ(list.back(), "");
}

TEST(Os, IniReadingLikeTheSystemCall) {
  std::string dir = hs::test::MakeTempDir("ini");
  std::string path = dir + "/site.url";
  std::ofstream(path) << "[DEFAULT]\r\nBASEURL=http://x/\r\n[InternetShortcut]\r\n"
                         "URL = http://example.com/a?b=c \r\nName=\"quoted\"\r\n";
  char buf[64];
  EXPECT_EQ(
      hs::os::GetPrivateProfileString("internetshortcut", "url", "", buf, sizeof buf, path.c_str()),
      24u);
  EXPECT_STREQ(buf, "http://example.com/a?b=c");
  hs::os::GetPrivateProfileString("InternetShortcut", "Name", "", buf, sizeof buf, path.c_str());
  EXPECT_STREQ(buf, "quoted");
  hs::os::GetPrivateProfileString("InternetShortcut", "Missing", "dflt", buf, sizeof buf,
                                  path.c_str());
  EXPECT_STREQ(buf, "dflt");
  EXPECT_EQ(hs::os::GetPrivateProfileString("InternetShortcut", "URL", "", buf, 5, path.c_str()),
            4u);
  EXPECT_STREQ(buf, "http");
  hs::os::GetPrivateProfileString("s", "k", "none", buf, sizeof buf, "/nonexistent/file.url");
  EXPECT_STREQ(buf, "none");
  std::filesystem::remove_all(dir);
}

TEST(Os, TempFilesAreUniqueAndDeletable) {
  std::string dir = hs::os::TempPath();
  ASSERT_FALSE(dir.empty());
  std::string a = hs::os::TempFileName(dir, "vbkm");
  std::string b = hs::os::TempFileName(dir, "vbkm");
  ASSERT_FALSE(a.empty());
  EXPECT_NE(a, b);
  EXPECT_TRUE(std::filesystem::exists(a));
  EXPECT_EQ(std::filesystem::path(a).filename().string().substr(0, 3), "vbk");
  EXPECT_TRUE(hs::os::DeleteFile(a));
  EXPECT_TRUE(hs::os::DeleteFile(b));
  EXPECT_FALSE(hs::os::DeleteFile(a));
}

TEST(Os, Utf16UnitCounts) {
  EXPECT_EQ(hs::os::AnsiToUtf16Length("abc", 3), 3u);
  EXPECT_EQ(hs::os::AnsiToUtf16Length("\xC3\xA9", 2), 1u);          // é
  EXPECT_EQ(hs::os::AnsiToUtf16Length("\xF0\x9F\x98\x80", 4), 2u);  // a surrogate pair
  EXPECT_EQ(hs::os::AnsiToUtf16Length("\xE2\x82", 2), 2u);          // cut sequence: per byte
}

TEST(ProfileStore, MultiStringsSurviveWritesRemovalAndAFreshObject) {
  std::string dir = hs::test::MakeTempDir("profile");
  setenv("HANDSET_CONFIG_DIR", dir.c_str(), 1);
  std::mt19937 gen(3);
  std::vector<CStringList> values(10);
  {
    CxRegSDK reg("Root\\GUI\\[PhoneBk]");
    for (size_t i = 0; i < values.size(); ++i) {
      for (unsigned k = 0; k < gen() % 4 + 1; ++k) {
        CString s;
        for (unsigned c = 0; c < gen() % 12 + 1; ++c) s += static_cast<char>('!' + gen() % 90);
        values[i].AddTail(s);
      }
      ASSERT_TRUE(reg.WriteProfileMultiString("ContactGroup",
                                              ("[" + std::to_string(i) + "]").c_str(), values[i]));
    }
    ASSERT_TRUE(reg.WriteProfileMultiString("Other", "keep", values[0]));
  }
  CxRegSDK again("Root\\GUI\\[PhoneBk]");
  for (size_t i = 0; i < values.size(); ++i) {
    CStringList got;
    ASSERT_TRUE(
        again.GetProfileMultiString("ContactGroup", ("[" + std::to_string(i) + "]").c_str(), got));
    EXPECT_EQ(got, values[i]);
  }
  EXPECT_TRUE(again.RemoveSessionKey("ContactGroup"));
  CStringList got;
  EXPECT_FALSE(again.GetProfileMultiString("ContactGroup", "[0]", got));
  EXPECT_TRUE(again.GetProfileMultiString("Other", "keep", got));
  EXPECT_EQ(got, values[0]);
  // Only the store file is left: the atomic writes clean up their temporary files.
  int files = 0;
  for (auto& e : std::filesystem::directory_iterator(dir)) files += e.is_regular_file();
  EXPECT_EQ(files, 1);
  std::filesystem::remove_all(dir);
}

TEST(Results, EveryDocumentedCodeHasItsOwnText) {
  for (int f = 0; f < HS_RESULT_FAMILY_COUNT; ++f) {
    auto family = static_cast<HsResultFamily>(f);
    int count = 0;
    const int* codes = HsResultCodes(family, &count);
    ASSERT_NE(codes, nullptr);
    ASSERT_GT(count, 1);
    std::set<std::string> texts;
    for (int i = 0; i < count; ++i) {
      std::string t = HsResultText(family, codes[i]);
      EXPECT_NE(t, "unknown result code") << HsResultFamilyName(family) << " " << codes[i];
      EXPECT_TRUE(texts.insert(t).second) << "duplicate text " << t;
    }
  }
  EXPECT_STREQ(HsResultText(HS_RESULT_MIDI_FILE, hs::midifile::kErrNotLoaded), "no file loaded");
  EXPECT_STREQ(HsResultText(HS_RESULT_SMAF, 7), "unknown result code");
}

TEST(MessageBox, HostHandlerSeesRightToLeftForArabic) {
  struct Seen {
    std::string text;
    unsigned flags = 0;
  } seen;
  HsSetMessageBoxHandler(
      [](const char* text, const char*, unsigned flags, void* user) {
        auto* s = static_cast<Seen*>(user);
        s->text = text;
        s->flags = flags;
        return 1;
      },
      &seen);
  HsMessageBox(HsLoadString(IDS_AAC_DECODE_ERROR), "handset", HS_MB_ICONERROR);
  EXPECT_EQ(seen.text, "Errors occured during AAC decoding process.");
  EXPECT_EQ(seen.flags & HS_MB_RTLREADING, 0u);
  g_strRCLanguageID = "Arabic";
  HsMessageBox("x", "handset", 0);
  EXPECT_NE(seen.flags & HS_MB_RTLREADING, 0u);
  g_strRCLanguageID = "English";
  HsSetMessageBoxHandler(nullptr, nullptr);
}

}  // namespace
