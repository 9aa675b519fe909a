#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "handset/pim.h"
#include "tools/Cli.h"
#include "tools/JsonReader.h"

namespace {

const char kUsage[] =
    "usage: handset bookmarks export TREE.json DIR [--dialect generic|oem] [--json]\n"
    "       handset bookmarks import DIR... [--json]\n\n"
    "A bookmark tree in JSON is a folder object:\n"
    "  {\"title\":\"\",\"type\":\"folder\",\"children\":[\n"
    "    {\"title\":\"News\",\"type\":\"bookmark\",\"url\":\"http://...\"},\n"
    "    {\"title\":\"Work\",\"type\":\"folder\",\"children\":[...]}]}\n"
    "export  writes the root's children into DIR: folders as folders, bookmarks as .vbm files\n"
    "        with legal, unique names. Prints the files written.\n"
    "import  reads the .vbm files and sub-folders of each DIR (or single .vbm files) into one\n"
    "        tree and prints it (as JSON in the format above with --json).\n";

int Run(const std::vector<std::string>& argv);

const hs::cli::Command kCommand{"bookmarks", "export and import bookmark trees as .vbm folders",
                                kUsage, Run};
hs::cli::Registrar reg(kCommand);

bool BuildNode(const hs::cli::JsonValue& v, CBkmkObj* node, std::string* error, int depth) {
  if (v.type != hs::cli::JsonValue::Object) return *error = "a node is not an object", false;
  if (depth > 64) return *error = "tree too deep", false;
  const hs::cli::JsonValue* title = v.Find("title");
  const hs::cli::JsonValue* type = v.Find("type");
  const hs::cli::JsonValue* url = v.Find("url");
  const hs::cli::JsonValue* children = v.Find("children");
  std::string kind = type && type->type == hs::cli::JsonValue::String ? type->str
                     : url                                            ? "bookmark"
                                                                      : "folder";
  if (kind != "folder" && kind != "bookmark")
    return *error = "unknown node type \"" + kind + "\"", false;
  node->SetTitle(title && title->type == hs::cli::JsonValue::String ? title->str.c_str() : "");
  node->SetFileType(kind == "folder" ? OBJECT_TYPE_FOLDER : OBJECT_TYPE_FILE);
  if (url && url->type == hs::cli::JsonValue::String) node->m_strURL = url->str;
  if (!children) return true;
  if (children->type != hs::cli::JsonValue::Array || kind != "folder")
    return *error = "\"children\" must be an array of a folder", false;
  for (const hs::cli::JsonValue& c : children->items) {
    CBkmkObj* child = new CBkmkObj;
    node->AddChild(child);
    if (!BuildNode(c, child, error, depth + 1)) return false;
  }
  return true;
}

void WriteNode(const CBkmkObj& n, hs::cli::Json& j) {
  bool folder = n.m_enBkmkType == OBJECT_TYPE_FOLDER;
  j.BeginObject()
      .Key("title")
      .String(n.m_strTitle)
      .Key("type")
      .String(folder ? "folder" : "bookmark");
  if (!folder) j.Key("url").String(n.m_strURL);
  if (folder) {
    j.Key("children").BeginArray();
    for (int i = 0; i < n.GetChildCount(); ++i)
      if (const CBkmkObj* c = n.GetChildBkmk(i)) WriteNode(*c, j);
    j.EndArray();
  }
  j.EndObject();
}

void PrintNode(const CBkmkObj& n, int indent) {
  for (int i = 0; i < n.GetChildCount(); ++i) {
    const CBkmkObj* c = n.GetChildBkmk(i);
    if (!c) continue;
    if (c->m_enBkmkType == OBJECT_TYPE_FOLDER) {
      std::printf("%*s%s/\n", indent * 2, "", c->m_strTitle.c_str());
      PrintNode(*c, indent + 1);
    } else {
      std::printf("%*s%s\t%s\n", indent * 2, "", c->m_strTitle.c_str(), c->m_strURL.c_str());
    }
  }
}

int Export(const hs::cli::Args& a) {
  if (a.Positional().size() != 3) {
    hs::cli::Fail("bookmarks export", "needs TREE.json and DIR");
    return 2;
  }
  const std::string& treePath = a.Positional()[1];
  const std::string& dir = a.Positional()[2];
  std::string dialect = a.Get("--dialect", "generic");
  if (dialect != "generic" && dialect != "oem") {
    hs::cli::Fail(dialect, "unknown dialect (generic or oem)");
    return 2;
  }
  std::vector<uint8_t> bytes;
  if (!hs::cli::ReadInput(treePath, &bytes)) return 1;
  hs::cli::JsonValue doc;
  std::string error;
  CBkmkObj root(nullptr, "", OBJECT_TYPE_FOLDER);
  if (!hs::cli::ParseJson(std::string(bytes.begin(), bytes.end()), &doc, &error) ||
      !BuildNode(doc, &root, &error, 0)) {
    hs::cli::Fail(treePath, error);
    return 1;
  }
  CStringList written;
  int ok = _BKMK_ExportVbkm(&root, dir.c_str(), dialect == "oem" ? BKMK_FLAG_OEM : 0, &written);
  if (a.Has("--json")) {
    hs::cli::Json j;
    j.BeginArray();
    for (const CString& f : written) j.String(f);
    j.EndArray();
    std::printf("%s\n", j.Str().c_str());
  } else {
    for (const CString& f : written) std::printf("%s\n", f.c_str());
  }
  if (!ok) {
    const char* why = _BKMK_GetLastError();
    hs::cli::Fail(dir,
                  std::string("export: ") + (*why ? why : "not every bookmark could be written"));
    return 1;
  }
  return 0;
}

int Import(const hs::cli::Args& a) {
  if (a.Positional().size() < 2) {
    hs::cli::Fail("bookmarks import", "needs at least one DIR");
    return 2;
  }
  CBkmkObj root(nullptr, "", OBJECT_TYPE_FOLDER);
  int status = 0;
  for (size_t i = 1; i < a.Positional().size(); ++i) {
    const std::string& path = a.Positional()[i];
    if (!_BKMK_IsPathExist(path.c_str())) {
      hs::cli::Fail(path, "no such file or folder");
      status = 1;
      continue;
    }
    CBkmkObj holder;
    CBkmkObj* node = _BKMK_ImportVbkm(&holder, path.c_str(), BKMK_FLAG_NONE);
    if (!node) {
      const char* why = _BKMK_GetLastError();
      hs::cli::Fail(path, std::string("import: ") + (*why ? why : "not a vBookmark"));
      status = 1;
      continue;
    }
    // A folder's contents go straight under the root; a single file is itself a child.
    CMediaDir* from = node->m_enBkmkType == OBJECT_TYPE_FOLDER ? node : &holder;
    from->MoveChildrenTo(&root);
  }
  if (a.Has("--json")) {
    hs::cli::Json j;
    WriteNode(root, j);
    std::printf("%s\n", j.Str().c_str());
  } else {
    PrintNode(root, 0);
  }
  return status;
}

int Run(const std::vector<std::string>& argv) {
  hs::cli::Args a(argv, {"--dialect"});
  int rc = hs::cli::CommonChecks(kCommand, a, {"--json"}, 1, SIZE_MAX);
  if (rc >= 0) return rc;
  const std::string& sub = a.Positional()[0];
  if (sub == "export") return Export(a);
  if (sub == "import") return Import(a);
  hs::cli::Fail(sub, "unknown subcommand (export or import)");
  return 2;
}

}  // namespace
