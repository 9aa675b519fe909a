#include <cstdio>

#include "handset/pim.h"
#include "tools/Cli.h"

namespace {

const char kUsage[] =
    "usage: handset groups list [--json]\n"
    "       handset groups save ID=NAME...\n\n"
    "Lists the phone book's contact groups kept in the profile store, or replaces them with the\n"
    "groups given (in order). An identifier or name cannot be empty.\n";

int Run(const std::vector<std::string>& argv);

const hs::cli::Command kCommand{"groups", "list or replace the stored contact groups", kUsage, Run};
hs::cli::Registrar reg(kCommand);

int List(bool json) {
  CContactGroupList list;
  LoadContactGroups(list);
  hs::cli::Json j;
  j.BeginArray();
  for (const CONTACT_GROUP& g : list) {
    if (json)
      j.BeginObject().Key("id").String(g.strID).Key("name").String(g.strName).EndObject();
    else
      std::printf("%s\t%s\n", g.strID.c_str(), g.strName.c_str());
  }
  j.EndArray();
  if (json) std::printf("%s\n", j.Str().c_str());
  return 0;
}

int Save(const std::vector<std::string>& groups) {
  CContactGroupList list;
  for (const std::string& g : groups) {
    size_t eq = g.find('=');
    if (eq == std::string::npos || eq == 0 || eq + 1 == g.size()) {
      hs::cli::Fail(g, "expected ID=NAME with both parts non-empty");
      return 2;
    }
    list.AddTail(CONTACT_GROUP{g.substr(0, eq), g.substr(eq + 1)});
  }
  if (SaveContactGroups(list) != list.GetCount()) {
    hs::cli::Fail("contact groups", "the profile store cannot be written");
    return 1;
  }
  return 0;
}

int Run(const std::vector<std::string>& argv) {
  hs::cli::Args a(argv, {});
  int rc = hs::cli::CommonChecks(kCommand, a, {"--json"}, 1, SIZE_MAX);
  if (rc >= 0) return rc;
  const auto& pos = a.Positional();
  if (pos[0] == "list" && pos.size() == 1) return List(a.Has("--json"));
  if (pos[0] == "save") return Save(std::vector<std::string>(pos.begin() + 1, pos.end()));
  hs::cli::PrintUsage(kCommand, stderr);
  return 2;
}

}  // namespace
