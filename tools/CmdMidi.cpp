#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "handset/melody.h"
#include "tools/Cli.h"

namespace {

const char kUsage[] =
    "usage: handset midi info FILE [--json]\n"
    "       handset midi save IN OUT [--format 0|1] [--from TICK --to TICK] [--enabled-only]\n\n"
    "info: loads a standard MIDI file into the editable model and reports what it kept: format,\n"
    "division, tempo, time signature, copyright, title, whether information was dropped, the\n"
    "SP-MIDI polyphony data and, per track, channel, program, bank select, names, note count,\n"
    "peak polyphony, velocity range and table type.\n"
    "save: loads IN and writes the model back as a new file OUT (\"-\" for standard output).\n"
    "  --format 0|1     file format (default: as loaded; several tracks are always format 1)\n"
    "  --from/--to      write only the notes starting in [FROM, TO), moved to start at tick 0\n"
    "  --enabled-only   skip disabled and empty tracks\n";

int Run(const std::vector<std::string>& argv);
const hs::cli::Command kCommand{"midi", "inspect or rewrite a standard MIDI file", kUsage, Run};
hs::cli::Registrar reg(kCommand);

bool Load(const std::string& path, CMidFileElement* file) {
  std::vector<uint8_t> bytes;
  if (!hs::cli::ReadInput(path, &bytes)) return false;
  int rc = file->LoadFromMemory(bytes.data(), static_cast<unsigned long>(bytes.size()));
  if (rc != hs::midifile::kOk) {
    hs::cli::FailCode(path, HS_RESULT_MIDI_FILE, rc);
    return false;
  }
  return true;
}

bool ParseTick(const std::string& text, uint32_t* out) {
  if (text.empty() || text[0] == '-') return false;
  char* end = nullptr;
  unsigned long long v = std::strtoull(text.c_str(), &end, 10);
  if (*end || v > 0xFFFFFFFFull) return false;
  *out = static_cast<uint32_t>(v);
  return true;
}

std::string TimeSignatureText(const uint8_t* ts) {
  char b[64];
  std::snprintf(b, sizeof(b), "%u/%u (%u clocks, %u 32nds)", ts[0], 1u << (ts[1] & 15), ts[2],
                ts[3]);
  return b;
}

struct TrackFacts {
  int channel, program, msb, lsb, notes, peak, vmin, vmax, vavg, table, enabled, wave;
  std::string name, instrument;
};

TrackFacts Facts(CMidTrackElement* t) {
  TrackFacts f{};
  f.channel = t->GetChannelNum() == 0xFF ? -1 : t->GetChannelNum();
  f.program = t->GetProgram();
  uint8_t v = 0;
  f.msb = t->GetBankSelectMSB(&v) == 0 ? v : -1;
  f.lsb = t->GetBankSelectLSB(&v) == 0 ? v : -1;
  f.notes = static_cast<int>(t->GetNoteCount());
  f.peak = t->GetPeakPolyphony();
  t->GetVelocity(&f.vmax, &f.vmin, &f.vavg, nullptr, nullptr);
  f.table = t->DecideTrackTableType();
  f.enabled = t->IsEnabled();
  f.wave = t->IsMMFWaveTrack();
  f.name = t->GetTrackName();
  f.instrument = t->GetInstrumentName();
  return f;
}

int Info(const hs::cli::Args& a) {
  const auto& pos = a.Positional();
  if (pos.size() != 2) {
    hs::cli::Fail("midi info", "expects one FILE");
    return 2;
  }
  CMidFileElement file;
  if (!Load(pos[1], &file)) return 1;
  uint8_t mipChannel[CMidFileElement::kMaxMipPairs], mipValue[CMidFileElement::kMaxMipPairs];
  int mipCount = file.GetMIPData(mipChannel, mipValue);
  int led = -1;
  file.GetMA2LedStatus(&led);
  const uint8_t* ts = file.GetTimeSignature();
  if (a.Has("--json")) {
    hs::cli::Json j;
    j.BeginObject().Key("file").String(pos[1]);
    j.Key("format").Int(file.GetMidiFormat()).Key("division").Int(file.GetDivision());
    j.Key("tempo").Int(file.GetTempo());
    j.Key("time_signature").BeginArray();
    for (int i = 0; i < 4; ++i) j.Int(ts[i]);
    j.EndArray();
    j.Key("copyright").String(file.GetCopyRight()).Key("title").String(file.GetSongTitle());
    j.Key("information_lost").Bool(file.IsInformationLost() != 0);
    j.Key("play_time_seconds").Number(file.GetMaxPlayTime());
    j.Key("sp_midi").Bool(file.IsSPMidi() != 0);
    j.Key("mip_device_id").Int(file.GetMIPDeviceID()).Key("mip").BeginArray();
    for (int i = 0; i < mipCount; ++i)
      j.BeginObject().Key("channel").Int(mipChannel[i]).Key("mip").Int(mipValue[i]).EndObject();
    j.EndArray();
    j.Key("led_track").Int(led);
    j.Key("tracks").BeginArray();
    for (uint32_t i = 0; i < file.GetTrackNum(); ++i) {
      TrackFacts f = Facts(file.GetTrackByIndex(static_cast<int>(i)));
      j.BeginObject().Key("index").Int(i).Key("channel").Int(f.channel);
      j.Key("program").Int(f.program).Key("bank_msb").Int(f.msb).Key("bank_lsb").Int(f.lsb);
      j.Key("name").String(f.name).Key("instrument").String(f.instrument);
      j.Key("notes").Int(f.notes).Key("peak_polyphony").Int(f.peak);
      j.Key("velocity_min").Int(f.vmin).Key("velocity_max").Int(f.vmax);
      j.Key("velocity_average").Int(f.vavg).Key("table_type").Int(f.table);
      j.Key("enabled").Bool(f.enabled != 0).Key("wave_track").Bool(f.wave != 0);
      j.EndObject();
    }
    j.EndArray().EndObject();
    std::printf("%s\n", j.Str().c_str());
    return 0;
  }
  std::printf("file: %s\nformat: %d\ndivision: %u\ntempo: %d bpm\ntime signature: %s\n",
              pos[1].c_str(), file.GetMidiFormat(), file.GetDivision(), file.GetTempo(),
              TimeSignatureText(ts).c_str());
  std::printf("copyright: %s\ntitle: %s\ninformation lost: %s\nplay time: %.2f s\n",
              file.GetCopyRight(), file.GetSongTitle(), file.IsInformationLost() ? "yes" : "no",
              file.GetMaxPlayTime());
  if (file.IsSPMidi()) {
    std::printf("SP-MIDI: device 0x%02X, MIP", file.GetMIPDeviceID());
    for (int i = 0; i < mipCount; ++i) std::printf(" ch%u=%u", mipChannel[i], mipValue[i]);
    std::printf("\n");
  } else {
    std::printf("SP-MIDI: no\n");
  }
  if (led >= 0) std::printf("LED track: %d\n", led);
  std::printf("tracks: %u\n", file.GetTrackNum());
  for (uint32_t i = 0; i < file.GetTrackNum(); ++i) {
    TrackFacts f = Facts(file.GetTrackByIndex(static_cast<int>(i)));
    std::printf(
        "  %u: channel %d, program %d, bank %d/%d, notes %d, peak polyphony %d, velocity %d-%d "
        "(avg %d), table type %d%s%s",
        i, f.channel, f.program, f.msb, f.lsb, f.notes, f.peak, f.vmin, f.vmax, f.vavg, f.table,
        f.enabled ? "" : ", disabled", f.wave ? ", wave track" : "");
    if (!f.name.empty()) std::printf(", name \"%s\"", f.name.c_str());
    if (!f.instrument.empty()) std::printf(", instrument \"%s\"", f.instrument.c_str());
    std::printf("\n");
  }
  return 0;
}

int Save(const hs::cli::Args& a) {
  const auto& pos = a.Positional();
  if (pos.size() != 3) {
    hs::cli::Fail("midi save", "expects IN and OUT");
    return 2;
  }
  int format = CMidFileElement::kFormatLoaded;
  std::string f = a.Get("--format");
  if (!f.empty()) {
    if (f != "0" && f != "1") {
      hs::cli::Fail("midi save", "--format must be 0 or 1");
      return 2;
    }
    format = f == "0" ? 0 : 1;
  }
  uint32_t from = 0, to = 0;
  bool hasFrom = !a.Get("--from").empty(), hasTo = !a.Get("--to").empty();
  if (hasFrom != hasTo || (hasFrom && (!ParseTick(a.Get("--from"), &from) ||
                                       !ParseTick(a.Get("--to"), &to) || from >= to))) {
    hs::cli::Fail("midi save", "--from and --to must be given together as ticks with FROM < TO");
    return 2;
  }
  CMidFileElement file;
  if (!Load(pos[1], &file)) return 1;
  unsigned long size = 0;
  const unsigned char* out =
      file.GetMidiFileBuf(format, &size, from, to, a.Has("--enabled-only") ? 1 : 0);
  if (!out) {
    hs::cli::FailCode(pos[2], HS_RESULT_MIDI_FILE, file.GetLastResult());
    return 1;
  }
  return hs::cli::WriteOutput(pos[2], out, size) ? 0 : 1;
}

int Run(const std::vector<std::string>& argv) {
  hs::cli::Args a(argv, {"--format", "--from", "--to"});
  int rc = hs::cli::CommonChecks(kCommand, a, {"--json", "--enabled-only"}, 1, 3);
  if (rc >= 0) return rc;
  const std::string& action = a.Positional()[0];
  if (action == "info") return Info(a);
  if (action == "save") return Save(a);
  hs::cli::Fail("midi", "unknown action \"" + action + "\" (info or save)");
  hs::cli::PrintUsage(kCommand, stderr);
  return 2;
}

}  // namespace
