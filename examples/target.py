"""A target for veldmap in a program of one's own: --target 'exec:python3 target.py FILE ADDRESS'.

A line asks for an access, and a line answers it: a number for what was read, "ok" for what was written, "error" and
words where nothing can be accessed so. This one has the bytes of FILE as the chip's memory from ADDRESS on; in its place
may stand a serial monitor, a probe or a board behind ssh."""

import sys

path, begin = sys.argv[1], int(sys.argv[2], 0)
with open(path, "r+b") as memory:
    for line in sys.stdin:
        access, address, width, *value = [line.split()[0], *(int(word, 0) for word in line.split()[1:])]
        memory.seek(0, 2)
        if not begin <= address <= begin + memory.tell() - width:
            answer = "error nothing lies there"
        elif access == "r":
            memory.seek(address - begin)
            answer = hex(int.from_bytes(memory.read(width), "little"))
        else:
            memory.seek(address - begin)
            memory.write(value[0].to_bytes(width, "little"))
            answer = "ok"
        memory.flush()
        print(answer, flush=True)
