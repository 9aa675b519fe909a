#include <gtest/gtest.h>

#include <ctime>
#include <string>

#include "handset/pim/VObjLite.h"

namespace {

// Instrumented builds run many times slower: they check memory at a tenth of the size, and the
// time bounds hold for the plain build.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define HS_SCALE_TEST_SANITIZED 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define HS_SCALE_TEST_SANITIZED 1
#endif
#if defined(HS_SCALE_TEST_SANITIZED)
const int kDivide = 10;
const double kSlack = 10;
#else
const int kDivide = 1;
const double kSlack = 1;
#endif

const _FormalDef kList[] = {
    {"BEGIN:VLIST", "", "", nullptr, VOBJ_ROW_MANDATORY},
    {"ITEM", ":", "", nullptr, VOBJ_ROW_OPTIONAL},
    {"END:VLIST", "", "", nullptr, VOBJ_ROW_CLOSING},
    {nullptr, nullptr, nullptr, nullptr, VOBJ_ROW_OPTIONAL},
};

class CList : public CVObjLite {
 public:
  CList() : CVObjLite(kList) {}
  bool CreateEmptyProperties() override { return false; }

 protected:
  void _CreateEmptySample(CStringList&) override {}
};

// 100,000 folded quoted-printable values (once 10.6 s, each join moving the rest of the text)
// and 2,000,000 lines of no known row are read in linear time; the values come out joined.
TEST(VObjScale, FoldedValuesAndUnknownLinesReadInLinearTime) {
  std::string folded = "BEGIN:VLIST\r\n";
  const int n = 100000 / kDivide;
  for (int i = 0; i < n; ++i) folded += "ITEM;ENCODING=QUOTED-PRINTABLE:a=\r\nb=\r\nc\r\n";
  folded += "END:VLIST\r\n";
  CList list;
  // Processor time, which a busy machine does not inflate.
  std::clock_t t0 = std::clock();
  ASSERT_TRUE(list.Parsing(&folded[0], nullptr));
  double s = double(std::clock() - t0) / CLOCKS_PER_SEC;
  ASSERT_EQ(list.GetProperties().GetCount(), n + 2);
  EXPECT_EQ(list.GetProperties().GetAt(n)->m_strValue, "abc");
  EXPECT_LT(s, 1.5 * kSlack);

  std::string unknown = "BEGIN:VLIST\r\n";
  const int noise = 2000000 / kDivide;
  for (int i = 0; i < noise; ++i) unknown += "X-NOISE:0123456789\r\n";
  unknown += "ITEM:last\r\nEND:VLIST\r\n";
  CList noisy;
  t0 = std::clock();
  EXPECT_FALSE(noisy.Parsing(&unknown[0], nullptr));
  s = double(std::clock() - t0) / CLOCKS_PER_SEC;
  EXPECT_EQ(noisy.GetSetAsideCount(), static_cast<size_t>(noise));
  EXPECT_EQ(noisy.GetErrorCode(), 0);
  EXPECT_STREQ(noisy.GetPropTableValue("ITEM"), "last");
  EXPECT_LT(s, 1.5 * kSlack);
}

}  // namespace
