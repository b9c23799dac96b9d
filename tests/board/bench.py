"""The simulated surroundings of the machine's engine: devices, boat, person."""
import queue
import subprocess
import threading

from machine import LIMIT, Failed


class Bench:
    """Commands of its console, one after the other; each that fails is a failure of the test."""

    options = ["--attach", "/etc/headunit/engine.toml", "--engine-log", "/var/log/headunit/headunit.log",
               "--engine-command", "systemctl {} headunit-engine", "--bus-command", "systemctl {} headunit-bus.service",
               "--no-display"]

    def __init__(self, machine):
        self.process = subprocess.Popen(machine.inside("headunit-bench", *self.options, "--stdin"), text=True,
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.lines = queue.Queue()
        threading.Thread(target=self._read, daemon=True).start()
        self.count = 0

    def _read(self):
        for line in self.process.stdout:
            self.lines.put(line.rstrip("\n"))
        self.lines.put(None)

    def do(self, *commands, limit=LIMIT):
        """Their output."""
        self.count += 1
        end = f"say end of {self.count}"
        self.process.stdin.write("\n".join([*commands, end]) + "\n")
        self.process.stdin.flush()
        said = []
        while True:
            try:
                line = self.lines.get(timeout=limit)
            except queue.Empty:
                raise Failed(f"the bench hangs in {commands}:\n" + "\n".join(said[-20:])) from None
            if line is None:
                raise Failed(f"the bench has ended in {commands}:\n" + "\n".join(said[-20:]))
            if f"end of {self.count}" in line:
                return "\n".join(said)
            said.append(line)
            if "✗" in line:
                raise Failed("\n".join(said[-20:]))

    def close(self):
        self.process.stdin.close()
        self.process.wait(LIMIT)
