"""A Debian machine in a container, with systemd as its first process: what the packages are for, as far as one can have it on
a desk. Needs root, debootstrap and systemd-nspawn."""
import os
import pathlib
import shutil
import signal
import subprocess
import time

LIMIT = 120  # seconds that a machine may take for anything


class Failed(Exception):
    pass


def output_of(command, **more):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace", **more)


def must(command, **more):
    result = output_of(command, **more)
    if result.returncode != 0:
        raise Failed(f"{' '.join(map(str, command))}: status {result.returncode}\n{result.stdout}")
    return result.stdout


def eventually(what, condition, limit=LIMIT):
    end = time.monotonic() + limit
    while True:
        last = condition()
        if last:
            return last
        if time.monotonic() > end:
            raise Failed(f"not within {limit} s: {what}")
        time.sleep(0.1)


def make_base(folder, packages):
    """A Debian as it comes, with what `packages` need; kept for the next time."""
    done = folder.with_suffix(".made")
    wanted = " ".join(packages)
    if done.exists() and done.read_text() == wanted:
        return
    shutil.rmtree(folder, ignore_errors=True)
    folder.parent.mkdir(parents=True, exist_ok=True)
    sources = must(["apt-get", "indextargets", "--format", "$(REPO_URI)", "Created-By: Packages"]).split()
    release = dict(line.split("=", 1) for line in pathlib.Path("/etc/os-release").read_text().splitlines() if "=" in line)
    must(["debootstrap", "--variant=minbase", "--include=systemd,systemd-sysv,udev", release["VERSION_CODENAME"], str(folder),
          sources[0]])
    must(["chroot", str(folder), "apt-get", "install", "-qq", "-y", "--no-install-recommends", *packages],
         env={**os.environ, "DEBIAN_FRONTEND": "noninteractive"})
    (folder / "etc/hostname").write_text("board\n")
    done.write_text(wanted)


class Machine:
    """One that is booted. Its files are in `root`, which outlives it."""

    def __init__(self, root):
        self.root = pathlib.Path(root)
        self.container = None
        self.leader = None

    def boot(self):
        log = open(self.root.with_suffix(".log"), "ab")
        self.container = subprocess.Popen(
            ["setpriv", "--pdeathsig", "KILL",  # with whoever tests
             "systemd-nspawn", "--quiet", "--boot", "--directory", str(self.root), "--register=no", "--keep-unit", "--private-network",
             "--link-journal=no", "--console=pipe", "--kill-signal=SIGRTMIN+3"],
            stdin=subprocess.DEVNULL, stdout=log, stderr=log, start_new_session=True)
        self.leader = int(eventually("the container's first process", self._first_process))
        eventually("the machine is up", lambda: self.tries("systemctl", "is-system-running").stdout.strip()
                   in ("running", "degraded"))
        self._take_controllers()

    def _first_process(self):
        if self.container.poll() is not None:
            raise Failed("systemd-nspawn ended: " + self.root.with_suffix(".log").read_text(errors="replace")[-500:])
        return output_of(["pgrep", "-P", str(self.container.pid)]).stdout.strip()

    def _take_controllers(self):
        """Where the kernel's control groups are of the first version a container gets them read-only: limits need more."""
        groups = "/sys/fs/cgroup"
        self.run("sh", "-c", f"for c in memory pids cpu cpuacct; do "
                 f"[ ! -d {groups}/$c ] || mount -o remount,rw,bind {groups}/$c; done; systemctl daemon-reexec")
        eventually("the manager is back", lambda: self.tries("systemctl", "is-system-running").returncode in (0, 1))

    def inside(self, *command):
        return ["nsenter", "-t", str(self.leader), "-m", "-u", "-i", "-n", "-p", "-C", "--", "env", "-i",
                "PATH=/usr/sbin:/usr/bin:/sbin:/bin", "LANG=C.UTF-8", "TERM=dumb", *command]

    def tries(self, *command, **more):
        return output_of(self.inside(*command), **more)

    def run(self, *command, **more):
        return must(self.inside(*command), **more)

    def power_cut(self):
        """Every process of it ends at once."""
        os.kill(self.leader, signal.SIGKILL)
        self.container.wait(LIMIT)
        self.leader = None

    def shut_down(self):
        if self.leader is None:
            return
        self.container.send_signal(signal.SIGTERM)
        try:
            self.container.wait(LIMIT)
        except subprocess.TimeoutExpired:
            self.power_cut()
        self.leader = None

    # What its service manager says.

    def property(self, unit, name):
        return self.run("systemctl", "show", "--value", "-p", name, unit).strip()

    def is_active(self, unit):
        return self.tries("systemctl", "is-active", "--quiet", unit).returncode == 0

    def journal(self, unit, *more):
        return self.run("journalctl", "--no-pager", "-o", "cat", "-u", unit, *more)
