"""Independent reading of a standard MIDI file with mido, reduced by the model's rules.

For each path given, prints "file PATH", then "error MESSAGE" when mido cannot read it, or one
line per kept item so the C++ test can compare:
  tempo BPM
  program CH PROGRAM
  bank CH MSB LSB          (-1 when absent)
  note CH START STOP KEY VELOCITY
The rules applied: in format 1 each channel's notes advance by the gaps between note events of
the chunk they are read from; one tempo (the one ruling the most ticks, as the loader accounts them), a
note-off closes the nearest earlier note of its key when that is open and otherwise opens a note,
notes left open close at the next note of their key or are dropped, and programs and bank selects
are kept only for channels that have notes.
"""
import sys

import mido


def main(path):
    mid = mido.MidiFile(path, clip=True)
    tempo_list = []  # [microseconds, ticks]
    cur_tempo, since_tempo = None, 0
    notes = {}  # channel -> list of [start, stop, key, velocity]
    event_time, program, msb, lsb = {}, {}, {}, {}
    running = {}  # channel -> the track's running note-event time
    for track in mid.tracks:
        tick = 0
        last_note_tick = 0
        for msg in track:
            tick += msg.time
            since_tempo += msg.time
            if msg.type == 'set_tempo' and msg.tempo:
                entry = next((e for e in tempo_list if e[0] == cur_tempo), None)
                if entry is None:
                    tempo_list.append([msg.tempo, 0])
                else:
                    entry[1] += since_tempo
                cur_tempo, since_tempo = msg.tempo, 0
            elif msg.type == 'program_change':
                program[msg.channel] = msg.program
            elif msg.type == 'control_change' and msg.control in (0, 32):
                (msb if msg.control == 0 else lsb)[msg.channel] = msg.value
            elif msg.type in ('note_on', 'note_off'):
                on = msg.type == 'note_on' and msg.velocity != 0
                chain = notes.setdefault(msg.channel, [])
                if mid.type == 1:
                    # Format 1: the track advances by the gap since the chunk's previous note.
                    at = running.get(msg.channel, 0) + tick - last_note_tick
                    running[msg.channel] = at
                    last_note_tick = tick
                else:
                    at = tick
                pos = len(chain)
                if at >= event_time.get(msg.channel, 0):
                    event_time[msg.channel] = at
                else:
                    while pos > 0 and chain[pos - 1][0] > at:
                        pos -= 1
                same = next((n for n in reversed(chain[:pos]) if n[2] == msg.note), None)
                if not on and same is not None and same[1] == 0:
                    same[1] = at
                else:
                    chain.insert(pos, [at, 0, msg.note, msg.velocity])
    if tempo_list:
        best = max(tempo_list, key=lambda e: e[1])  # the first of equals
        print('tempo', min(int(60000000.0 / best[0]), 65535))
    else:
        print('tempo', 120)
    for ch in sorted(notes):
        chain = notes[ch]
        kept = []
        for i, n in enumerate(chain):
            if n[1] == 0:
                later = next((m for m in chain[i + 1:] if m[2] == n[2]), None)
                if later is None:
                    continue
                n[1] = later[0]
            kept.append(n)
        if not chain:
            continue
        print('program', ch, program.get(ch, -1))
        print('bank', ch, msb.get(ch, -1), lsb.get(ch, -1))
        for n in kept:
            print('note', ch, *n)


if __name__ == '__main__':
    for arg in sys.argv[1:]:
        print('file', arg)
        try:
            main(arg)
        except Exception as exc:  # mido refuses some damaged files; the test skips those
            print('error', type(exc).__name__)
