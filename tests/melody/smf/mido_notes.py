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
    cur_tempo = None
    since_tempo = 0
    notes = {}  # channel -> list of [start, stop, key, velocity]
    event_time = {}
    program = {}
    msb = {}
    lsb = {}
    running = {}  # channel -> the track's running note-event time
    for track in mid.tracks:
        tick = 0
        last_note_tick = 0
        for msg in track:
            tick += msg.time
            since_tempo += msg.time
            if msg.type == 'set_tempo' and msg.tempo:
                if cur_tempo is None:
                    tempo_list.append([msg.tempo, 0])
                else:
                    for entry in tempo_list:
                        if entry[0] == cur_tempo:
                            entry[1] += since_tempo
                            break
                    else:
                        tempo_list.append([msg.tempo, 0])
                cur_tempo = msg.tempo
                since_tempo = 0
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
                t0 = event_time.get(msg.channel, 0)
                if at >= t0:
                    event_time[msg.channel] = at
                    pos = len(chain)
                else:
                    pos = len(chain)
                    while pos > 0 and chain[pos - 1][0] > at:
                        pos -= 1
                if not on:
                    for i in range(pos - 1, -1, -1):
                        if chain[i][2] == msg.note:
                            if chain[i][1] == 0:
                                chain[i][1] = at
                                break
                            chain.insert(pos, [at, 0, msg.note, msg.velocity])
                            break
                    else:
                        chain.insert(pos, [at, 0, msg.note, msg.velocity])
                else:
                    chain.insert(pos, [at, 0, msg.note, msg.velocity])
    if tempo_list:
        best = tempo_list[0]
        for entry in tempo_list:
            if entry[1] > best[1]:
                best = entry
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
