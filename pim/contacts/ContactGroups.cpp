#include "handset/pim/PersonalInfo.h"
#include "handset/platform/Config.h"
#include "handset/platform/RegSDK.h"

namespace {

constexpr char kSection[] = "ContactGroup";

CString GroupKeyPath() {
  CString path;
  path.Format("%s\\%s\\%s", g_szRegRootPath, "GUI", "[PhoneBk]");
  return path;
}

CString EntryName(int i) {
  CString name;
  name.Format("[%d]", i);
  return name;
}

}  // namespace

int LoadContactGroups(CContactGroupList& list) {
  list.RemoveAll();
  CxRegSDK reg(GroupKeyPath().c_str());
  CStringList values;
  for (int i = 0; reg.GetProfileMultiString(kSection, EntryName(i).c_str(), values); ++i) {
    if (values.GetCount() < 2) continue;  // a damaged value costs its group, not the rest
    list.AddTail(CONTACT_GROUP{values.GetAt(0), values.GetAt(1)});
  }
  return list.GetCount();
}

int SaveContactGroups(const CContactGroupList& list) {
  CxRegSDK reg(GroupKeyPath().c_str());
  if (!reg.RemoveSessionKey(kSection)) return 0;
  int written = 0;
  for (const CONTACT_GROUP& g : list) {
    CStringList values;
    values.AddTail(g.strID);
    values.AddTail(g.strName);
    if (!reg.WriteProfileMultiString(kSection, EntryName(written).c_str(), values)) break;
    ++written;
  }
  return written;
}
