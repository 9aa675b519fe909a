#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "handset/messaging.h"
#include "tools/Cli.h"

namespace {

const char kUsage[] =
    "usage: handset mms show [--json] FILE.mms...\n"
    "       handset mms extract FILE.mms DIR [--json]\n"
    "       handset mms encode FILE.smil -o OUT.mms [--from A] [--to A]... [--cc A]... [--bcc "
    "A]...\n"
    "                          [--subject S]\n"
    "       handset mms size FILE.smil [--from A] [--to A]... [--cc A]... [--bcc A]... [--subject "
    "S]\n"
    "                        [--json]\n\n"
    "show     decodes MMS PDUs of any message type: type, headers and one line per part\n"
    "         (content type, name, size); --json gives every header and part header.\n"
    "extract  writes every part of FILE.mms (the presentation too) into DIR under its\n"
    "         Content-Location, made legal and unique; existing entries are never replaced.\n"
    "encode   makes an m-send-req of a SMIL presentation and the media files it references\n"
    "         (missing or empty files are left out). Phone numbers are sent with /TYPE=PLMN;\n"
    "         without --from the relay inserts the sender. OUT \"-\" is standard output.\n"
    "size     the octets that encode would write for the same arguments.\n\n"
    "example: handset mms encode slides/pres.smil --to +4912345 --subject Hi -o msg.mms\n";

int Run(const std::vector<std::string>& argv);
const hs::cli::Command kCommand{"mms", "show, extract, encode and size MMS messages", kUsage, Run};
hs::cli::Registrar reg(kCommand);

const std::vector<std::string> kValued = {"-o", "--from", "--to", "--cc", "--bcc", "--subject"};

bool Decode(const std::string& path, CMmsMessage* msg) {
  std::vector<uint8_t> bytes;
  if (!hs::cli::ReadInput(path, &bytes)) return false;
  size_t offset = 0;
  int rc = MmsDecodePdu(bytes.data(), bytes.size(), msg, &offset);
  if (rc == hs::mmspdu::kOk) return true;
  hs::cli::Fail(path,
                "cannot decode the MMS PDU: " + std::string(HsResultText(HS_RESULT_MMS_PDU, rc)) +
                    " (at octet " + std::to_string(offset) + ")");
  return false;
}

std::string TypeName(int type) {
  const char* name = MmsMessageTypeName(type);
  if (name) return name;
  char b[32];
  std::snprintf(b, sizeof(b), "unknown (0x%02X)", type & 0xFF);
  return b;
}

void JsonHeaders(hs::cli::Json& j, const std::vector<CMmsHeaderField>& headers) {
  j.BeginArray();
  for (const CMmsHeaderField& h : headers)
    j.BeginObject().Key("name").String(h.m_sName).Key("value").String(h.m_sValue).EndObject();
  j.EndArray();
}

void JsonList(hs::cli::Json& j, const char* key, const CStringList& list) {
  j.Key(key).BeginArray();
  for (const CString& s : list) j.String(s);
  j.EndArray();
}

void JsonPart(hs::cli::Json& j, const CMmsMediaObj& obj) {
  j.BeginObject()
      .Key("content_type")
      .String(obj.GetContentType())
      .Key("name")
      .String(obj.GetFileName())
      .Key("content_id")
      .String(obj.GetContentID())
      .Key("content_location")
      .String(obj.GetExplicitContentLocation())
      .Key("charset")
      .Int(obj.GetCharset())
      .Key("size")
      .Int(obj.GetSize())
      .Key("headers");
  JsonHeaders(j, obj.m_headers);
  j.EndObject();
}

void JsonMessage(hs::cli::Json& j, const std::string& file, const CMmsMessage& m) {
  j.BeginObject().Key("file").String(file).Key("type").String(TypeName(m.m_nMessageType));
  j.Key("type_code").Int(m.m_nMessageType).Key("transaction_id").String(m.m_sTransactionId);
  j.Key("from").String(m.m_sFrom);
  JsonList(j, "to", m.m_lstTo);
  JsonList(j, "cc", m.m_lstCc);
  JsonList(j, "bcc", m.m_lstBcc);
  j.Key("subject").String(m.m_sSubject).Key("date").Int(m.m_tDate);
  j.Key("headers");
  JsonHeaders(j, m.m_headers);
  j.Key("content_type").String(m.m_sContentType).Key("multipart").Bool(m.m_bMultipart);
  j.Key("parts").BeginArray();
  if (m.m_bMultipart)
    for (const CMmsMediaObj* obj : m.GetBody().GetObjects()) JsonPart(j, *obj);
  j.EndArray();
  if (!m.m_bMultipart && m.GetBody().GetCount() == 1) {
    j.Key("body");
    JsonPart(j, *m.GetBody().GetAt(0));
  }
  j.EndObject();
}

void PrintMessage(const std::string& file, const CMmsMessage& m) {
  std::printf("%s: %s\n", file.c_str(), TypeName(m.m_nMessageType).c_str());
  for (const CMmsHeaderField& h : m.m_headers)
    std::printf("  %s: %s\n", h.m_sName.c_str(), h.m_sValue.c_str());
  if (!m.m_bMultipart) {
    if (const CMmsMediaObj* body = m.GetBody().GetAt(0))
      std::printf("body: %s, %u bytes\n", body->GetContentType().c_str(), body->GetSize());
    return;
  }
  std::printf("parts: %d\n", m.GetBody().GetCount());
  int i = 0;
  for (const CMmsMediaObj* obj : m.GetBody().GetObjects()) {
    std::string name = obj->GetFileName();
    if (name.empty()) name = obj->GetContentID();
    std::printf("  %d\t%s\t%s\t%u bytes\n", ++i, obj->GetContentType().c_str(),
                name.empty() ? "-" : name.c_str(), obj->GetSize());
  }
}

int Show(const hs::cli::Args& a) {
  const auto& pos = a.Positional();
  if (pos.size() < 2) {
    hs::cli::Fail("mms show", "expects at least one FILE");
    return 2;
  }
  bool json = a.Has("--json");
  hs::cli::Json j;
  if (json && pos.size() > 2) j.BeginArray();
  int status = 0;
  for (size_t i = 1; i < pos.size(); ++i) {
    CMmsMessage m;
    if (!Decode(pos[i], &m)) {
      status = 1;
      continue;
    }
    if (json)
      JsonMessage(j, pos[i], m);
    else
      PrintMessage(pos[i], m);
  }
  if (json && pos.size() > 2) j.EndArray();
  if (json && !j.Str().empty()) std::printf("%s\n", j.Str().c_str());
  return status;
}

int Extract(const hs::cli::Args& a) {
  const auto& pos = a.Positional();
  if (pos.size() != 3) {
    hs::cli::Fail("mms extract", "expects FILE.mms and DIR");
    return 2;
  }
  CMmsMessage m;
  if (!Decode(pos[1], &m)) return 1;
  CStringList written;
  int rc = MmsExtractParts(m, pos[2].c_str(), &written);
  if (a.Has("--json")) {
    hs::cli::Json j;
    j.BeginArray();
    for (const CString& f : written) j.String(f);
    j.EndArray();
    std::printf("%s\n", j.Str().c_str());
  } else {
    for (const CString& f : written) std::printf("%s\n", f.c_str());
  }
  if (rc != hs::mmspdu::kOk) {
    hs::cli::Fail(pos[2], "extracting " + pos[1] + ": " + HsResultText(HS_RESULT_MMS_PDU, rc));
    return 1;
  }
  return 0;
}

/// The m-send-req of a presentation with the header options; false after a message.
bool Compose(const hs::cli::Args& a, const std::string& smil, CMmsMessage* m) {
  if (MmsAddPresentationToBody(smil.c_str(), &m->GetBody()) < 0) {
    hs::cli::Fail(smil, "not a readable SMIL presentation");
    return false;
  }
  m->m_sFrom = a.Get("--from");
  m->m_sSubject = a.Get("--subject");
  for (const std::string& s : a.GetAll("--to")) m->m_lstTo.AddTail(s);
  for (const std::string& s : a.GetAll("--cc")) m->m_lstCc.AddTail(s);
  for (const std::string& s : a.GetAll("--bcc")) m->m_lstBcc.AddTail(s);
  return true;
}

bool HasHeaderOptions(const hs::cli::Args& a) {
  for (const char* o : {"--from", "--to", "--cc", "--bcc", "--subject"})
    if (a.Has(o)) return true;
  return false;
}

int Encode(const hs::cli::Args& a) {
  const auto& pos = a.Positional();
  if (pos.size() != 2 || !a.Has("-o")) {
    hs::cli::Fail("mms encode", "expects FILE.smil and -o OUT.mms");
    return 2;
  }
  CMmsMessage m;
  if (!Compose(a, pos[1], &m)) return 1;
  std::vector<uint8_t> pdu;
  int rc = MmsEncodePdu(m, &pdu);
  if (rc != hs::mmspdu::kOk) {
    hs::cli::FailCode(pos[1], HS_RESULT_MMS_PDU, rc);
    return 1;
  }
  return hs::cli::WriteOutput(a.Get("-o"), pdu.data(), pdu.size()) ? 0 : 1;
}

int Size(const hs::cli::Args& a) {
  const auto& pos = a.Positional();
  if (pos.size() != 2) {
    hs::cli::Fail("mms size", "expects one FILE.smil");
    return 2;
  }
  int size = 0;
  if (HasHeaderOptions(a)) {
    CMmsMessage m;
    if (!Compose(a, pos[1], &m)) return 1;
    size = MmsCalcSendReqPduSize(m);
  } else {
    size = GetMMSReqPduSize(pos[1].c_str(), "", "");
  }
  if (size <= 0) {
    hs::cli::Fail(pos[1], "not a readable SMIL presentation");
    return 1;
  }
  if (a.Has("--json")) {
    hs::cli::Json j;
    j.BeginObject().Key("file").String(pos[1]).Key("size").Int(size).EndObject();
    std::printf("%s\n", j.Str().c_str());
  } else {
    std::printf("%d\n", size);
  }
  return 0;
}

int Run(const std::vector<std::string>& argv) {
  hs::cli::Args a(argv, kValued);
  int rc = hs::cli::CommonChecks(kCommand, a, {"--json"}, 1, 1000);
  if (rc >= 0) return rc;
  const std::string& mode = a.Positional()[0];
  if (mode == "show") return Show(a);
  if (mode == "extract") return Extract(a);
  if (mode == "encode") return Encode(a);
  if (mode == "size") return Size(a);
  hs::cli::Fail(mode, "unknown mode (show, extract, encode or size)");
  return 2;
}

}  // namespace
