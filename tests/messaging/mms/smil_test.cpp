#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "handset/messaging.h"
#include "messaging/mms/SmilScanner.h"
#include "tests/TestUtil.h"

namespace fs = std::filesystem;

namespace {

using Refs = std::vector<std::string>;

Refs Scan(const std::string& text) {
  return hs::mms::SmilMediaReferences(reinterpret_cast<const uint8_t*>(text.data()), text.size());
}

std::string Utf16(const std::string& ascii, bool bigEndian, bool bom) {
  std::string out;
  if (bom) out += bigEndian ? "\xFE\xFF" : "\xFF\xFE";
  for (char c : ascii) {
    if (bigEndian) out += '\0';
    out += c;
    if (!bigEndian) out += '\0';
  }
  return out;
}

void Write(const fs::path& p, const std::string& bytes) {
  fs::create_directories(p.parent_path());
  std::ofstream(p, std::ios::binary) << bytes;
}

// Presentations as phones write them, well-formed or not. The expected lists are what libxml2's
// recovering parser reads from the same texts (names matched without regard to case), except
// the last case: it drops unquoted values, which phones do send and which are kept here.
TEST(SmilScanner, MediaReferencesOfMalformedMarkup) {
  struct Case {
    const char* what;
    std::string text;
    Refs refs;
  } cases[] = {
      {"plain",
       "<smil><body><par><img src=\"a.gif\"/><text src='b.txt'/></par></body></smil>",
       {"a.gif", "b.txt"}},
      {"declaration ending ?/>",
       "<?xml version=\"1.0\"?/>\n<!DOCTYPE smil PUBLIC \"x\" \"y\"/>\n<smil><img src=\"a.gif\" "
       "/></smil>",
       {"a.gif"}},
      {"unclosed element", "<smil><par><text>\n<audio src=\"s.amr\"/></par></smil>", {"s.amr"}},
      {"comments and CDATA hide tags",
       "<smil><!-- <img src=\"no.gif\"/> --><![CDATA[<img src=\"no2.gif\"/>]]>"
       "<video src=\"v.3gp\"/></smil>",
       {"v.3gp"}},
      {"entities and blanks",
       "<smil><ref src = \"a&amp;b%20c&#x41;&#66;.jpg\" /><img src=\"x\ny.gif\"/></smil>",
       {"a&b%20cAB.jpg", "x y.gif"}},
      {"prefix and case",
       "<s:smil xmlns:s=\"u\"><s:IMG SRC=\"p.png\"/><Audio src=\"q.amr\"/></s:smil>",
       {"p.png", "q.amr"}},
      {"media without src and others with src",
       "<smil><img alt=\"x\"/><region src=\"r.gif\"/><animation src=\"an.gif\"/>"
       "<textstream src=\"ts.txt\"/></smil>",
       {"an.gif", "ts.txt"}},
      {"doctype with internal subset",
       "<!DOCTYPE smil [ <!ENTITY e \"<img src='no.gif'/>\"> ]><smil><img src=\"yes.gif\"/></smil>",
       {"yes.gif"}},
      {"duplicates kept",
       "<smil><img src=\"a.gif\"/><img src=\"a.gif\"/></smil>",
       {"a.gif", "a.gif"}},
      {"cut off inside a tag", "<smil><img src=\"a.gif\"/><text src=\"b.t", {"a.gif", "b.t"}},
      {"cut off inside a comment",
       "<smil><img src=\"a.gif\"/><!-- <img src=\"b.gif\"/>",
       {"a.gif"}},
      {"unquoted value",
       "<smil><img src=a.gif/><text src=b.txt region=Text></smil>",
       {"a.gif", "b.txt"}},
  };
  for (const Case& c : cases) EXPECT_EQ(Scan(c.text), c.refs) << c.what;
}

TEST(SmilScanner, RecognisesPresentationsInEveryEncoding) {
  const std::string doc = "<?xml version=\"1.0\"?>\n<smil><img src=\"a.gif\"/></smil>";
  struct Case {
    const char* what;
    std::string bytes;
    bool smil;
  } cases[] = {
      {"utf-8", doc, true},
      {"utf-8 with mark", "\xEF\xBB\xBF" + doc, true},
      {"utf-16le with mark", Utf16(doc, false, true), true},
      {"utf-16be with mark", Utf16(doc, true, true), true},
      {"utf-16le without mark", Utf16(doc, false, false), true},
      {"utf-16be without mark", Utf16(doc, true, false), true},
      {"comment first, no declaration", "<!-- x -->\n<SMIL></SMIL>", true},
      {"another document", "<html><smil/></html>", false},
      {"no markup", "smil", false},
      {"binary", std::string("\x00\x01<\x02smil", 8), false},
      {"empty", "", false},
  };
  for (const Case& c : cases) {
    const uint8_t* p = reinterpret_cast<const uint8_t*>(c.bytes.data());
    EXPECT_EQ(hs::mms::IsSmilText(p, c.bytes.size()), c.smil) << c.what;
  }
  std::string utf16 = Utf16(doc, false, true);
  EXPECT_EQ(
      hs::mms::SmilMediaReferences(reinterpret_cast<const uint8_t*>(utf16.data()), utf16.size()),
      Refs{"a.gif"});
}

TEST(SmilRelationFile, ResolvesListsAndLeavesOutWhatIsNotAFileHere) {
  fs::path dir = hs::test::MakeTempDir("smil-rel");
  Write(dir / "pres.smil",
        "<smil><body>"
        "<img src=\"cid:1\"/><text src=\"cid:&lt;t&gt;\"/><audio src=\"cid:none\"/>"
        "<img src=\"./a.gif\"/><img src=\"a.gif\"/><ref src=\"sub/b.txt\"/>"
        "<img src=\"http://x.example/c.gif\"/><img src=\"/etc/passwd\"/>"
        "<img src=\"../up.gif\"/><img src=\"sub/../../up.gif\"/><img src=\"missing.jpg\"/>"
        "</body></smil>");
  Write(dir / "1.jpg", "J");
  Write(dir / "t", "T");
  Write(dir / "a.gif", "G");
  Write(dir / "sub" / "b.txt", "B");
  CString folder;
  CStringList files;
  ASSERT_TRUE(GetSMILRelationFile((dir / "pres.smil").string().c_str(), folder, files));
  EXPECT_TRUE(fs::equivalent(fs::path(folder.c_str()), dir));
  CStringList expect;
  for (const char* f : {"1.jpg", "t", "a.gif", "sub/b.txt", "missing.jpg"}) expect.AddTail(f);
  EXPECT_EQ(files, expect);

  Write(dir / "not.smil", "<html/>");
  EXPECT_FALSE(GetSMILRelationFile((dir / "not.smil").string().c_str(), folder, files));
  EXPECT_TRUE(files.IsEmpty());
  EXPECT_FALSE(GetSMILRelationFile((dir / "absent.smil").string().c_str(), folder, files));
  fs::remove_all(dir);
}

// The size leaves out missing and empty media, and equals that of the same parts put together
// by hand.
TEST(MmsReqPduSize, CountsThePresentationAndTheMediaThatCanBeRead) {
  fs::path dir = hs::test::MakeTempDir("smil-size");
  const std::string smil =
      "<smil><par><img src=\"a.gif\"/><text src=\"empty.txt\"/><audio src=\"gone.amr\"/>"
      "<img src=\"cid:c1\"/></par></smil>";
  Write(dir / "p.smil", smil);
  Write(dir / "a.gif", "GIF89a-data");
  Write(dir / "empty.txt", "");
  Write(dir / "c1.jpg", std::string("\xFF\xD8\xFF", 3));
  CMmsMessage byHand;
  byHand.GetBody().CreateMediaObject("p.smil", smil.data(), static_cast<uint32_t>(smil.size()));
  byHand.GetBody().CreateMediaObject("a.gif", "GIF89a-data", 11);
  CMmsMediaObj* jpg = byHand.GetBody().CreateMediaObject("c1.jpg", "\xFF\xD8\xFF", 3);
  jpg->SetContentID("<c1>");
  int expected = MmsCalcSendReqPduSize(byHand);
  EXPECT_EQ(GetMMSReqPduSize((dir / "p.smil").string().c_str(), "", ""), expected);
  EXPECT_EQ(GetMMSReqPduSize((dir / "p.smil").string().c_str(), nullptr, nullptr), expected);

  // Once the audio is there it adds one entry: two one-octet lengths, "audio/amr" as text (10),
  // Content-ID "<gone.amr>" (13), Content-Location "gone.amr" (10) and its six octets.
  Write(dir / "gone.amr", "#!AMR\n");
  EXPECT_EQ(GetMMSReqPduSize((dir / "p.smil").string().c_str(), "", ""), expected + 2 + 33 + 6);

  struct Case {
    const char* file;
    const char* content;
    int format;
  } cases[] = {
      {"proj.mcf", "MCF?", MMS_FILE_MCF},
      {"proj.XMM", "enciphered", MMS_FILE_XMM},
      {"note.txt", "hello", MMS_FILE_UNKNOWN},
  };
  for (const Case& c : cases) {
    std::string path = (dir / c.file).string();
    Write(path, c.content);
    EXPECT_EQ(GetMMSFileFormat(path.c_str()), c.format) << c.file;
    EXPECT_EQ(GetMMSReqPduSize(path.c_str(), "", ""), 0) << c.file;
    EXPECT_EQ(GetMMSReqPduSize(path.c_str(), dir.string().c_str(), "project"), 0) << c.file;
  }
  EXPECT_EQ(GetMMSFileFormat((dir / "p.smil").string().c_str()), MMS_FILE_SMIL);
  EXPECT_EQ(GetMMSFileFormat((dir / "absent.smil").string().c_str()), MMS_FILE_UNKNOWN);
  EXPECT_EQ(GetMMSReqPduSize(nullptr, "", ""), 0);
  fs::remove_all(dir);
}

}  // namespace
