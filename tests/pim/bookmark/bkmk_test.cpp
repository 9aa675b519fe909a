#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "handset/pim/BkmkFuncs.h"
#include "handset/pim/BkmkObj.h"
#include "tests/TestUtil.h"

namespace fs = std::filesystem;

namespace {

CBkmkObj* AddBookmark(CBkmkObj* parent, const char* title, const char* url) {
  CBkmkObj* b = new CBkmkObj("h", title, OBJECT_TYPE_FILE);
  b->m_strURL = url;
  parent->AddChild(b);
  return b;
}

CBkmkObj* AddFolder(CBkmkObj* parent, const char* title) {
  CBkmkObj* f = new CBkmkObj("h", title, OBJECT_TYPE_FOLDER);
  parent->AddChild(f);
  return f;
}

// Equal node for node, in the order import produces: sub-folders, then bookmarks by file name.
void ExpectSameTree(const CBkmkObj& a, const CBkmkObj& b, const std::string& where) {
  ASSERT_EQ(a.GetChildCount(), b.GetChildCount()) << where;
  for (int i = 0; i < a.GetChildCount(); ++i) {
    const CBkmkObj* x = a.GetChildBkmk(i);
    const CBkmkObj* y = b.GetChildBkmk(i);
    ASSERT_TRUE(x && y);
    EXPECT_TRUE(x->IsFileEqual(*y)) << where << "/" << x->m_strTitle << " vs " << y->m_strTitle
                                    << " " << x->m_strURL << " vs " << y->m_strURL;
    ExpectSameTree(*x, *y, where + "/" + x->m_strTitle);
  }
}

TEST(BkmkNames, SiblingsBecomeUniqueFoldersFirst) {
  CBkmkObj root(nullptr, "root", OBJECT_TYPE_FOLDER);
  CBkmkObj* f = AddFolder(&root, "F");
  AddBookmark(f, "Mail", "http://m");
  AddBookmark(f, "mail", "http://m2");
  AddBookmark(&root, "News", "http://1");
  AddBookmark(&root, "News", "http://2");
  AddBookmark(&root, "News", "http://3");
  AddBookmark(&root, "News(1)", "http://4");
  _BKMK_PreProcessVbkmFileName(&root);
  EXPECT_EQ(root.GetChildBkmk(1)->m_strTitle, "News");
  EXPECT_EQ(root.GetChildBkmk(2)->m_strTitle, "News(1)");
  EXPECT_EQ(root.GetChildBkmk(3)->m_strTitle, "News(2)");
  EXPECT_EQ(root.GetChildBkmk(4)->m_strTitle, "News(1)(1)");
  EXPECT_EQ(f->GetChildBkmk(1)->m_strTitle, "mail(1)");
  EXPECT_EQ(f->GetChildBkmk(1)->GetDirName(), "mail(1)");
  EXPECT_EQ(root.GetFileCount(0), 4);
  EXPECT_EQ(root.GetFileCount(1), 6);
  EXPECT_EQ(root.GetFolderCount(1), 1);
}

TEST(BkmkExport, LegalAndUniqueFileNames) {
  std::string dir = hs::test::MakeTempDir("bkmk-export");
  CBkmkObj root(nullptr, "root", OBJECT_TYPE_FOLDER);
  AddBookmark(&root, "a/b:c", "http://abc");
  AddBookmark(&root, "Mail", "http://mail");
  AddBookmark(&root, "q*?<>|\"\\", "http://q");
  CBkmkObj* sub = AddFolder(&root, "Sub");
  AddBookmark(sub, "x", "http://x");
  // Mail.vbm and the folder Sub are there before the export.
  std::ofstream(dir + "/Mail.vbm").close();
  fs::create_directory(dir + "/Sub");
  CStringList written;
  ASSERT_EQ(_BKMK_ExportVbkm(&root, dir.c_str(), BKMK_FLAG_NONE, &written), 1);
  for (const char* name : {"a_b_c.vbm", "Mail(1).vbm", "q_______.vbm", "Sub(1)/x.vbm"})
    EXPECT_TRUE(fs::exists(dir + "/" + name)) << name;
  EXPECT_EQ(written.GetCount(), 4);
  CStringList names;
  EXPECT_EQ(_BKMK_GetContainFileNames(dir.c_str(), names), 4);
  EXPECT_EQ(names.GetAt(0), "Mail(1).vbm");
  CStringList folders;
  EXPECT_EQ(_BKMK_GetContainFolderNames(dir.c_str(), folders), 2);
  EXPECT_TRUE(_BKMK_IsPathExist(("\\\\?\\" + dir + "\\Sub(1)").c_str()));
  EXPECT_TRUE(_BKMK_CreatePathFolder((dir + "/deep/er").c_str()));
  EXPECT_TRUE(_BKMK_IsPathExist((dir + "/deep/er").c_str()));
  fs::remove_all(dir);
}

TEST(BkmkExport, TreeExportedAndImportedBackIsEqual) {
  for (int flag : {BKMK_FLAG_NONE, BKMK_FLAG_OEM}) {
    std::string dir = hs::test::MakeTempDir("bkmk-roundtrip");
    CBkmkObj root(nullptr, "", OBJECT_TYPE_FOLDER);
    CBkmkObj* news = AddFolder(&root, "A news");
    AddFolder(news, "Empty");
    AddBookmark(news, "Daily", "https://daily.example/?q=1&r=%20#top");
    AddBookmark(news, "Daily", "https://daily.example/2");
    CBkmkObj* deep = AddFolder(AddFolder(&root, "B"), "C");
    AddBookmark(deep, "caf\xC3\xA9 = bar", "http://x.example/~user");
    AddBookmark(&root, "Home", "http://home.example/");
    AddBookmark(&root, "a/b:c", "rtsp://stream.example/s");
    ASSERT_EQ(_BKMK_ExportVbkm(&root, dir.c_str(), flag, nullptr), 1);

    CBkmkObj back;
    CBkmkObj* imported = _BKMK_ImportVbkm(&back, dir.c_str(), BKMK_FLAG_STRICT);
    ASSERT_NE(imported, nullptr);
    // Files sort by their sanitised names: "Daily" < "Daily(1)", "Home" < "a_b_c".
    ExpectSameTree(root, *imported, "flag" + std::to_string(flag));
    fs::remove_all(dir);
  }
}

TEST(BkmkImport, SelectedFilesAndFailures) {
  std::string dir = hs::test::MakeTempDir("bkmk-import");
  std::string good = dir + "/good.vbm", bad = dir + "/bad.vbm", extra = dir + "/extra.vbm";
  auto write = [](const std::string& p, const char* text) { std::ofstream(p) << text; };
  write(good, "BEGIN:VBKM\nVERSION:1.0\nTITLE:T\nURL:http://t\nEND:VBKM\n");
  write(bad, "BEGIN:VCARD\nEND:VCARD\n");
  write(extra, "BEGIN:VBKM\nVERSION:1.0\nTITLE:E\nURL:http://e\nX-IRMC-LUID:12\nEND:VBKM\n");
  CBkmkObj root;
  CStringList paths;
  paths.AddTail(good.c_str());
  paths.AddTail(bad.c_str());
  paths.AddTail(extra.c_str());
  EXPECT_FALSE(_BKMK_ImportSelectedVbkms(&root, paths));
  ASSERT_EQ(root.GetChildCount(), 2);  // the unknown line is tolerated unless strict
  EXPECT_EQ(root.GetChildBkmk(0)->m_strURL, "http://t");
  EXPECT_EQ(root.GetChildBkmk(1)->m_strTitle, "E");
  EXPECT_EQ(_BKMK_ImportVbkm(&root, extra.c_str(), BKMK_FLAG_STRICT), nullptr);
  EXPECT_EQ(_BKMK_ImportVbkm(&root, (dir + "/missing.vbm").c_str(), 0), nullptr);
  fs::remove_all(dir);
}

TEST(BkmkPackage, SubtreeRoundTripAndBoundedTexts) {
  CBkmkObj root("r", "root", OBJECT_TYPE_FOLDER);
  CBkmkGenCap cap;
  cap.nFolerNameWLen = 12;
  cap.strVBKMversion = "1.0";
  cap.enTitleCharset = VOBJ_CHARSET_UTF_8;
  root.SetGenCap(&cap);
  root.m_nMaxChildFile = 50;
  AddBookmark(AddFolder(&root, "f"), "b", "http://b")->m_nCustImgDown = 3;
  CPackageBlk blk;
  root.PackData("bk.", blk, 1);
  EXPECT_EQ(blk.Entries().count("bk.nFolerNameWLen"), 1u);
  EXPECT_EQ(blk.Entries().count("bk.ClassID"), 1u);
  CUnpackageBlk un;
  std::vector<uint8_t> bytes = blk.Serialize();
  ASSERT_TRUE(un.Unpack(bytes.data(), bytes.size()));
  CBkmkObj back;
  ASSERT_EQ(back.UnpackData("bk.", un, 1), 1);
  EXPECT_TRUE(back == root);
  ASSERT_NE(back.m_pGenCap, nullptr);
  EXPECT_EQ(back.m_pGenCap->nFolerNameWLen, 12);
  ASSERT_EQ(back.GetChildCount(), 1);
  EXPECT_TRUE(*back.GetChildBkmk(0) == *root.GetChildBkmk(0));
  EXPECT_TRUE(*back.GetChildBkmk(0)->GetChildBkmk(0) == *root.GetChildBkmk(0)->GetChildBkmk(0));
  EXPECT_EQ(back.GetChildBkmk(0)->GetParentDir(), &back);

  // Over-long stored texts are cut to their field; a wrong class id is refused.
  CPackageBlk evil;
  root.PackData("", evil, 0);
  std::string huge(100000, 'T');
  evil.AddString("m_strTitle", huge.c_str());
  evil.AddString("strVBKMversion", huge.c_str());
  CBkmkObj cut;
  ASSERT_EQ(cut.UnpackData("", CUnpackageBlk(evil), 0), 1);
  EXPECT_EQ(cut.m_strTitle.size(), CBkmkObj::kMaxTitle - 1);
  EXPECT_EQ(cut.m_pGenCap->strVBKMversion.size(), CBkmkGenCap::kMaxVersion - 1);
  evil.AddString("ClassID", "CSomethingElse");
  EXPECT_EQ(cut.UnpackData("", CUnpackageBlk(evil), 0), 0);
  CPackageBlk lying;
  root.PackData("", lying, 0);
  lying.AddInt("m_nDirChildCount", 1000000);
  EXPECT_EQ(cut.UnpackData("", CUnpackageBlk(lying), 1), 0);
}

TEST(BkmkObj, VBookmarkConversionAndCopies) {
  CBkmkObj b("h1", "Title", OBJECT_TYPE_FILE);
  b.m_strURL = "http://u";
  CVbkm* v = nullptr;
  ASSERT_EQ(b.CreateVBKM(v), 1);
  EXPECT_STREQ(v->GetPropTableValue("X-IRMC-URL"), "http://u");
  CBkmkObj c;
  ASSERT_EQ(c.FromVBKM(v), 1);
  EXPECT_TRUE(c.IsFileEqual(b));
  EXPECT_FALSE(c == b);  // the handle is not in a vBookmark
  delete v;
  CBkmkObj folder("h2", "F", OBJECT_TYPE_FOLDER);
  CVbkm* none = nullptr;
  EXPECT_EQ(folder.CreateVBKM(none), 0);
  EXPECT_EQ(none, nullptr);
  folder.AddChild(b.Clone());
  std::unique_ptr<CBkmkObj> dup(folder.DuplicateBkmkObj());
  ASSERT_EQ(dup->GetChildCount(), 1);
  EXPECT_TRUE(*dup->GetChildBkmk(0) == b);
  EXPECT_EQ(dup->RemoveChildBkmk(dup->GetChildBkmk(0)), 1);
  EXPECT_EQ(dup->RemoveChildBkmk(&b), 0);
}

}  // namespace

namespace {

// Any vBookmark file the sample corpus holds, wherever it lies, imports as a bookmark.
TEST(BkmkImport, EveryCorpusVBookmarkIsRead) {
  HS_SKIP_WITHOUT_CORPUS();
  std::error_code ec;
  int seen = 0;
  CBkmkObj root;
  for (auto it = fs::recursive_directory_iterator(hs::test::CorpusDir(), ec);
       !ec && it != fs::recursive_directory_iterator(); it.increment(ec)) {
    if (!it->is_regular_file() || GetFileType(it->path().string().c_str()).CompareNoCase("vbm"))
      continue;
    ++seen;
    CBkmkObj* node = _BKMK_ImportVbkm(&root, it->path().string().c_str(), BKMK_FLAG_NONE);
    ASSERT_NE(node, nullptr) << it->path();
    EXPECT_EQ(node->m_enBkmkType, OBJECT_TYPE_FILE);
  }
  if (seen == 0) GTEST_SKIP() << "the corpus holds no .vbm files";
}

}  // namespace

namespace {

// Stored texts longer than the phone's fields are cut on unpack: handle 63 bytes, title 255,
// URL 2047, vBookmark version 15. A text of exactly the field's length stays whole.
TEST(BkmkPackage, TextsAreCutToTheirFieldOnUnpack) {
  struct Case {
    const char* key;
    size_t keep;
  } cases[] = {
      {"m_strHandle", 63}, {"m_strTitle", 255}, {"m_strURL", 2047}, {"strVBKMversion", 15}};
  for (const Case& c : cases) {
    for (size_t len : {c.keep, c.keep + 1, size_t(100000)}) {
      CBkmkObj node("h", "t", OBJECT_TYPE_FILE);
      CBkmkGenCap cap;
      node.SetGenCap(&cap);
      CPackageBlk blk;
      node.PackData("", blk, 0);
      blk.AddString(c.key, std::string(len, 'x').c_str());
      CBkmkObj back;
      ASSERT_EQ(back.UnpackData("", CUnpackageBlk(blk), 0), 1) << c.key;
      const CString& got = std::string(c.key) == "m_strHandle"  ? back.m_strHandle
                           : std::string(c.key) == "m_strTitle" ? back.m_strTitle
                           : std::string(c.key) == "m_strURL"   ? back.m_strURL
                                                                : back.m_pGenCap->strVBKMversion;
      EXPECT_EQ(got.size(), std::min(len, c.keep)) << c.key << " " << len;
    }
  }
}

}  // namespace
