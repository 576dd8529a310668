# SPDX-License-Identifier: GPL-3.0-or-later
"""What benchmarks of whole programs share: the release build, a private MariaDB server, and runs that are measured."""
import contextlib, os, re, shutil, statistics, subprocess, sys, tempfile, time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
BIN = os.path.join(ROOT, "build/release")
CLI = os.path.join(BIN, "velmora-cli")
# Qt's remarks on windows without a screen are none of ours.
QUIET = os.environ | {"QT_LOGGING_RULES": "*=false", "XDG_RUNTIME_DIR": os.environ.get("XDG_RUNTIME_DIR", "/tmp")}


def build(*targets):
    """Brings the release build of these programs up to date."""
    log = os.path.join(ROOT, "build/release-configure.log")
    os.makedirs(os.path.dirname(log), exist_ok=True)
    options = os.environ.get("VELMORA_BENCH_OPTIONS", "").split()
    with open(log, "w") as output:
        if subprocess.run(["cmake", "--preset", "release", *options], cwd=ROOT, stdout=output, stderr=output).returncode:
            sys.exit(open(log).read())
    subprocess.run(["cmake", "--build", "--preset", "release", "--target", *targets, "--", "--quiet"], cwd=ROOT, check=True)


@contextlib.contextmanager
def scratch_folder(in_memory=False, needed=0):
    """A folder that goes with the block. One in memory makes a server's tables twenty times as fast; where there is no
    room for `needed` bytes it is on the disk all the same."""
    place = "/dev/shm" if in_memory and os.path.isdir("/dev/shm") and shutil.disk_usage("/dev/shm").free > needed else None
    folder = tempfile.mkdtemp(prefix="velmora-bench-", dir=place)
    try:
        if shutil.disk_usage(folder).free < needed:
            sys.exit(f"{folder} has no room for {needed // 2**20} MB")
        yield folder
    finally:
        shutil.rmtree(folder)


class Server:
    """A private MariaDB by its local socket, ended with the block. Its pages are small, for many small tables, unless
    other options are given."""

    def __init__(self, folder, *options):
        self.folder, self.socket = folder, os.path.join(folder, "socket")
        self.client = ["mariadb", "--no-defaults", "--user=root", "--socket=" + self.socket]
        self.options = list(options) or ["--innodb-page-size=4096"]

    def __enter__(self):
        data, user = os.path.join(self.folder, "data"), subprocess.check_output(["id", "-un"], text=True).strip()
        common = ["--no-defaults", "--user=" + user, "--datadir=" + data, "--tmpdir=" + self.folder, *self.options]
        made = subprocess.run(["mariadb-install-db", *common, "--auth-root-authentication-method=normal", "--skip-test-db"],
                              capture_output=True, text=True)
        if made.returncode:
            sys.exit(made.stdout + made.stderr)
        log = os.path.join(self.folder, "server.log")
        with open(log, "w") as output:
            self.process = subprocess.Popen(
                ["mariadbd", *common, "--socket=" + self.socket, "--skip-networking", "--pid-file=" + self.folder + "/pid",
                 "--innodb-flush-log-at-trx-commit=0", "--innodb-file-per-table=0"], stdout=output, stderr=output)
        while subprocess.run(self.client + ["--execute", "select 1"], capture_output=True).returncode:
            if self.process.poll() is not None:
                sys.exit(open(log).read())
            time.sleep(0.1)
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()

    def execute(self, statements):
        return subprocess.run(self.client + ["-N", "--execute", statements], check=True, capture_output=True, text=True).stdout

    def load(self, database, path):
        """Makes the database anew of a script; gives its name."""
        self.execute(f"drop database if exists {database}; create database {database}")
        with open(path) as script:
            subprocess.run(self.client + ["--init-command=set foreign_key_checks=0, sql_mode=''", database], stdin=script,
                           check=True)
        return database

    def spent(self):
        """Seconds of processors so far."""
        with open(f"/proc/{self.process.pid}/stat") as stat:
            fields = stat.read().rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def source(self, database):
        """The database as the companion takes it."""
        return f"MySQL:server=localhost;database={database};username=root;socket={self.socket}"


class Run:
    """A program's run: seconds by the clock and of processors, those of its children and of `server` included, its peak
    of memory in MB, its exit status, what it has printed."""

    def __init__(self, command, keep=False, limit=None, server=None, **options):
        start, spent = time.perf_counter(), server.spent() if server else 0
        with tempfile.TemporaryFile("w+") as output:
            process = subprocess.Popen(command, stdout=output if keep else subprocess.DEVNULL, stderr=subprocess.PIPE
                                       if limit is None else subprocess.DEVNULL, text=True, start_new_session=True, **options)
            self.finished = limit is None or self._within(process, limit)
            errors = process.stderr.read() if process.stderr else ""
            _, status, usage = os.wait4(process.pid, 0)
            output.seek(0)
            self.output = output.read()
        self.status = os.waitstatus_to_exitcode(status)
        self.seconds = time.perf_counter() - start
        self.processor = usage.ru_utime + usage.ru_stime + (server.spent() - spent if server else 0)
        self.peak = usage.ru_maxrss / 1024
        if limit is None and self.status not in (0, 1):
            sys.exit(f"{' '.join(command)}: status {self.status}\n{errors}")

    @staticmethod
    def _within(process, limit):
        end = time.monotonic() + limit
        while os.waitid(os.P_PID, process.pid, os.WEXITED | os.WNOHANG | os.WNOWAIT) is None:
            if time.monotonic() > end:
                os.killpg(process.pid, 9)
                return False
            time.sleep(0.005)
        return True


def median(runs, value=lambda run: run.seconds):
    return statistics.median(value(run) for run in runs)


def make_sample(tables, folder, percent):
    """The two files of the sample with so many of the target's tables differing."""
    os.makedirs(folder, exist_ok=True)
    subprocess.run([os.path.join(BIN, "bench/bench_sample"), str(tables), folder, str(percent)], check=True)
    return [os.path.join(folder, name) for name in ("reference.sql", "target.sql")]
