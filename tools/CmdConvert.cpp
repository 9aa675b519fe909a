#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "handset/melody.h"
#include "tools/Cli.h"

namespace {

const char kUsage[] =
    "usage: handset convert [options] IN OUT\n\n"
    "Converts a ringtone between MIDI and iMelody. The direction comes from the extensions:\n"
    ".mid/.midi to .imy, .imy to .mid (IN or OUT may be \"-\" for standard input/output; the\n"
    "other one then decides). A MIDI file must hold a single track: iMelody carries one voice.\n\n"
    "options for MIDI to iMelody:\n"
    "  --style N       STYLE line, 0-2 (default 0)\n"
    "  --volume N      VOLUME line, 0-15 (default 15)\n"
    "  --max-notes N   stop the melody after N notes and rests\n"
    "  --max-bytes N   keep the whole text within N bytes\n"
    "  --name TEXT     melody name handed to the converter; the iMelody header written here\n"
    "                  has no NAME line, so it does not appear in the output\n"
    "general:\n"
    "  --json          print a summary as JSON (not with OUT \"-\")\n"
    "  --help          this text\n";

enum class Kind { kUnknown, kMidi, kImy };

Kind KindOf(const std::string& path) {
  if (path == "-") return Kind::kUnknown;
  CString ext = GetFileType(path.c_str());
  if (ext.CompareNoCase("mid") == 0 || ext.CompareNoCase("midi") == 0) return Kind::kMidi;
  if (ext.CompareNoCase("imy") == 0) return Kind::kImy;
  return Kind::kUnknown;
}

// A whole decimal number within [lo, hi]; false otherwise.
bool ParseInt(const std::string& s, long lo, long hi, int* out) {
  if (s.empty()) return false;
  char* end = nullptr;
  long v = std::strtol(s.c_str(), &end, 10);
  if (*end != '\0' || v < lo || v > hi) return false;
  *out = static_cast<int>(v);
  return true;
}

int Run(const std::vector<std::string>& argv);

const hs::cli::Command kCommand{"convert", "convert a ringtone between MIDI and iMelody", kUsage,
                                Run};
hs::cli::Registrar reg(kCommand);

struct Summary {
  const char* direction;
  size_t bytes;
  int tracks;
};

struct ImyOptions {
  int style = 0;
  int volume = 15;
  int noteLimit = -1;
  int sizeLimit = -1;
  std::string name;
};

// Reads the MIDI-to-iMelody options; false with a message when one is out of range.
bool ParseImyOptions(const hs::cli::Args& a, ImyOptions* o) {
  struct Opt {
    const char* name;
    long lo, hi;
    int* target;
  } opts[] = {{"--style", 0, 2, &o->style},
              {"--volume", 0, 15, &o->volume},
              {"--max-notes", 0, 1000000000L, &o->noteLimit},
              {"--max-bytes", 0, 1000000000L, &o->sizeLimit}};
  for (const Opt& opt : opts) {
    if (a.Has(opt.name) && !ParseInt(a.Get(opt.name), opt.lo, opt.hi, opt.target)) {
      hs::cli::Fail(kCommand.name, std::string(opt.name) + " needs a number from " +
                                       std::to_string(opt.lo) + " to " + std::to_string(opt.hi));
      return false;
    }
  }
  o->name = a.Get("--name");
  return true;
}

int MidiToImy(const std::string& in, const std::string& out, const ImyOptions& o,
              const std::vector<uint8_t>& data, Summary* sum) {
  CMid2iMelody conv;
  conv.SetStyle(o.style);
  conv.SetVolumeLvl(o.volume);
  conv.SetLimit(o.noteLimit, o.sizeLimit);
  if (!o.name.empty()) conv.SetiMelodyName(o.name.c_str());

  CMidFileElement file;
  int rc = file.LoadFromMemory(data.data(), static_cast<unsigned long>(data.size()));
  if (rc != 0) {
    hs::cli::FailCode(in, HS_RESULT_MIDI_FILE, rc);
    return 1;
  }
  sum->tracks = static_cast<int>(file.GetTrackNum());
  if (file.GetTrackNum() > 1) {
    hs::cli::Fail(in, "has " + std::to_string(file.GetTrackNum()) +
                          " tracks; iMelody holds one (keep one track, then convert)");
    return 1;
  }
  CString text;
  rc = conv.DoConvertMidElelemt2Str(&file, text);
  if (rc != 0) {
    hs::cli::FailCode(in, HS_RESULT_MIDI_TO_IMELODY, rc);
    return 1;
  }
  if (!hs::cli::WriteOutput(out, text.data(), text.size())) return 1;
  sum->direction = "midi-to-imelody";
  sum->bytes = text.size();
  return 0;
}

int ImyToMidi(const std::string& in, const std::string& out, const std::vector<uint8_t>& data,
              Summary* sum) {
  CiMelody2Mid conv;
  int error = 0;
  std::unique_ptr<CMidFileElement> file(
      conv.DoConvert(CString(reinterpret_cast<const char*>(data.data()), data.size()), error));
  if (!file) {
    hs::cli::FailCode(in, HS_RESULT_IMELODY_TO_MIDI, error);
    return 1;
  }
  unsigned long size = 0;
  const unsigned char* bytes = file->GetMidiFileBuf(0, &size, 0, 0, 0);
  if (!bytes || size == 0) {
    hs::cli::FailCode(in, HS_RESULT_MIDI_FILE, hs::midifile::kErrNothingProduced);
    return 1;
  }
  if (!hs::cli::WriteOutput(out, bytes, size)) return 1;
  sum->direction = "imelody-to-midi";
  sum->bytes = size;
  sum->tracks = static_cast<int>(file->GetTrackNum());
  return 0;
}

int Run(const std::vector<std::string>& argv) {
  hs::cli::Args a(argv, {"--name", "--style", "--volume", "--max-notes", "--max-bytes"});
  int rc = hs::cli::CommonChecks(kCommand, a, {"--json"}, 2, 2);
  if (rc >= 0) return rc;
  const std::string& in = a.Positional()[0];
  const std::string& out = a.Positional()[1];
  Kind from = KindOf(in);
  Kind to = KindOf(out);
  if (from == Kind::kUnknown)
    from = to == Kind::kMidi ? Kind::kImy : to == Kind::kImy ? Kind::kMidi : from;
  if (to == Kind::kUnknown)
    to = from == Kind::kMidi ? Kind::kImy : from == Kind::kImy ? Kind::kMidi : to;
  if (from == Kind::kUnknown || from == to) {
    hs::cli::Fail(kCommand.name, "cannot tell the direction: use .mid/.midi and .imy names (" + in +
                                     " -> " + out + ")");
    return 2;
  }
  bool json = a.Has("--json");
  if (json && out == "-") {
    hs::cli::Fail(kCommand.name, "--json cannot share standard output with OUT \"-\"");
    return 2;
  }
  if (from == Kind::kImy) {
    for (const char* o : {"--style", "--volume", "--max-notes", "--max-bytes", "--name"}) {
      if (a.Has(o)) {
        hs::cli::Fail(kCommand.name, std::string(o) + " applies to MIDI to iMelody only");
        return 2;
      }
    }
  }
  ImyOptions opts;
  if (from == Kind::kMidi && !ParseImyOptions(a, &opts)) return 2;
  std::vector<uint8_t> data;
  if (!hs::cli::ReadInput(in, &data)) return 1;
  Summary sum{"", 0, 0};
  rc = from == Kind::kMidi ? MidiToImy(in, out, opts, data, &sum) : ImyToMidi(in, out, data, &sum);
  if (rc != 0 || !json) return rc;
  hs::cli::Json j;
  j.BeginObject()
      .Key("input")
      .String(in)
      .Key("output")
      .String(out)
      .Key("direction")
      .String(sum.direction)
      .Key("bytes")
      .Int(static_cast<long long>(sum.bytes))
      .Key("tracks")
      .Int(sum.tracks)
      .EndObject();
  std::printf("%s\n", j.Str().c_str());
  return 0;
}

}  // namespace
