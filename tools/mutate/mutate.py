"""How many faults do the tests see? scripts/mutate SEED N [--folder FOLDER]... [--tests PROGRAM]... [--work FOLDER]

Makes N single faults in the sources by rule (comparison turned, constant off by one, branch or statement left out,
and/or, return value), builds, runs the tests, and reports which faults were killed and which survived. The same seed
chooses the same faults of the same sources.

All faults go into one build of a copy, each switched on by a number that is read at the start of a program, so that one costs
one run of tests. What cannot be built is left out, and the next takes its place. Results are kept beside the copy: a
run that was stopped goes on when it is given again. The working tree is read and never changed. The folder of a run
can be deleted at any time.

A fault that no test comes by is "not reached". Headers, templates and what is reckoned by the compiler get no faults.

--folder   below src/, as in engines/mysql; may stand several times. Otherwise all but the desktop program
--tests    test programs to run, as in test_core; "all" for every one that comes by the fault. Otherwise those of the
           fault's own folder or the next one above it that has some, the live ones too
--like     plan.json of an earlier run: the faults of that run in place of new ones, where the sources still have them: a
           fault is told by its file, its rule, the words of the source it is about, and which of several alike it is
--work     where the copies stand. Otherwise velmora-mutate in the user's cache folder
"""

import argparse
import collections
import concurrent.futures
import hashlib
import json
import os
import pathlib
import random
import re
import shlex
import shutil
import signal
import subprocess
import sys
import time

import faults

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
PATIENCE = 10  # seconds that a run may take beyond three times the usual


def command_line():
    parser = argparse.ArgumentParser(prog="scripts/mutate", description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("seed", type=int, metavar="SEED")
    parser.add_argument("count", type=int, metavar="N")
    parser.add_argument("--folder", action="append", default=[])
    parser.add_argument("--tests", action="append", default=[])
    cache = os.environ.get("XDG_CACHE_HOME") or pathlib.Path.home() / ".cache"
    parser.add_argument("--like", type=pathlib.Path)
    parser.add_argument("--work", type=pathlib.Path, default=pathlib.Path(cache) / "velmora-mutate")
    options = parser.parse_args()
    if options.count < 1:
        parser.error("N must be at least 1")
    for folder in options.folder:
        if not (ROOT / "src" / folder).is_dir():
            parser.error(f"there is no folder src/{folder}")
    return options


def say(text):
    print(text, flush=True)


def run(words, **more):
    return subprocess.run(words, capture_output=True, text=True, errors="replace", check=False, **more)


def must(what, words, log, **more):
    with open(log, "w", encoding="utf-8") as out:
        if subprocess.run(words, stdout=out, stderr=subprocess.STDOUT, check=False, **more).returncode != 0:
            sys.exit(f"mutate: {what} failed; see {log}")


def tracked_files():
    names = run(["git", "-C", str(ROOT), "ls-files", "-z", "--cached", "--others", "--exclude-standard"]).stdout
    return sorted(name for name in names.split("\0") if name and (ROOT / name).is_file())


class Work:
    """The copy of the sources, the build of it, and what is known so far."""

    def __init__(self, options):
        self.options = options
        files = tracked_files()
        digest = hashlib.sha256(repr((options.seed, options.count, options.folder, str(options.like))).encode())
        for name in (name for name in files if name.startswith(("src/", "tests/", "tools/mutate/"))):
            digest.update(name.encode() + b"\0" + (ROOT / name).read_bytes())
        self.folder = options.work.resolve() / f"{options.seed}-{options.count}-{digest.hexdigest()[:12]}"
        if self.folder.is_relative_to(ROOT):
            sys.exit("mutate: the copy must not stand in the working tree")
        self.copy = self.folder / "copy"
        self.build = self.folder / "build"
        self.plan = self.folder / "plan.json"
        self.results = self.folder / "results.jsonl"
        self.files = files

    def make_copy(self):
        shutil.rmtree(self.copy, ignore_errors=True)
        for name in self.files:
            target = self.copy / name
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(ROOT / name, target)

    def configure(self):
        flags = f"-O1 -g0 -w -include {shlex.quote(str(self.copy / 'tools/mutate/Fault.h'))}"
        words = ["cmake", "-S", self.copy, "-B", self.build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=None"]
        words += [f"-DCMAKE_CXX_FLAGS={flags}", "-DVELMORA_TOGETHER=OFF"]  # a fault names its source
        words += ["-DVELMORA_DESKTOP=" + ("ON" if self._needs_desktop() else "OFF")]
        must("configuring", words, self.folder / "configure.log")

    def _needs_desktop(self):
        return any(folder.startswith("shell") for folder in self.options.folder)

    def sources(self):
        """Those that the build compiles, with their commands."""
        entries = json.loads((self.build / "compile_commands.json").read_text())
        chosen = {}
        for entry in entries:
            path = pathlib.Path(entry["file"])
            if not path.is_relative_to(self.copy / "src"):
                continue
            name = str(path.relative_to(self.copy / "src"))
            if not self.options.folder or any(name.startswith(folder + "/") for folder in self.options.folder):
                chosen[name] = entry
        return chosen


class Planter:
    """Puts faults into the copy, and takes out those that do not compile."""

    def __init__(self, work):
        self.work = work
        self.entries = work.sources()
        self.texts = {name: (work.copy / "src" / name).read_text() for name in self.entries}
        self.planted = {name: [] for name in self.entries}
        self.dropped = 0

    def plant(self, seed, count):
        waiting = [fault for name in sorted(self.entries) for fault in faults.Source(name, self.texts[name]).faults()]
        seen = collections.Counter()
        for fault in waiting:
            fault.place = seen[fault.file, fault.rule, fault.shown]
            seen[fault.file, fault.rule, fault.shown] += 1
        say(f"{len(waiting)} places in {len(self.entries)} sources")
        if self.work.options.like:
            waiting = self._faults_like(json.loads(self.work.options.like.read_text()), waiting)
            say(f"{len(waiting)} of the earlier run are still there")
            count = len(waiting)
        else:
            random.Random(seed).shuffle(waiting)
        number = 0
        while waiting and (missing := count - sum(map(len, self.planted.values()))) > 0:
            touched = set()
            for fault in waiting[:missing]:
                number += 1
                fault.number = number
                self.planted[fault.file].append(fault)
                touched.add(fault.file)
            waiting = waiting[missing:]
            with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
                list(pool.map(self._settle, sorted(touched)))
            say(f"{sum(map(len, self.planted.values()))} of {count} compile, {self.dropped} do not")
        return sorted((f for planted in self.planted.values() for f in planted), key=lambda fault: fault.number)

    @staticmethod
    def _faults_like(plan, faults_here):
        places = {}
        for fault in faults_here:
            places.setdefault((fault.file, fault.rule, fault.shown), []).append(fault)
        return [
            places[key][fault["place"]]
            for fault in plan
            if fault["place"] < len(places.get(key := (fault["file"], fault["rule"], fault["shown"]), []))
        ]

    def _settle(self, name):
        while self.planted[name]:
            lines = self._bad_lines(name, self.planted[name])
            if lines is None:
                break
            good = [fault for fault in self.planted[name] if fault.line not in lines]
            if len(good) == len(self.planted[name]):  # the errors are elsewhere
                good = self._halve(name, self.planted[name])
            self.dropped += len(self.planted[name]) - len(good)
            self.planted[name] = good
        self._write(name, self.planted[name])

    def _halve(self, name, suspects):
        """Those of the suspects that compile together, found by halves."""
        if self._bad_lines(name, suspects) is None:
            return suspects
        if len(suspects) == 1:
            return []
        middle = len(suspects) // 2
        first = self._halve(name, suspects[:middle])
        second = self._halve(name, suspects[middle:])
        return first + second if self._bad_lines(name, first + second) is None else first

    def _write(self, name, chosen):
        (self.work.copy / "src" / name).write_text(faults.apply(self.texts[name], chosen))

    def _bad_lines(self, name, chosen):
        """The lines of the source in which the compiler finds errors; None when there are none."""
        self._write(name, chosen)
        entry = self.entries[name]
        words = shlex.split(entry["command"])
        output = words.index("-o")
        words = [word for word in words[:output] + words[output + 2 :] if word != "-c"]
        result = run([*words, "-fsyntax-only"], cwd=entry["directory"])
        if result.returncode == 0:
            return None
        return {int(line) for line in re.findall(rf"{re.escape(name)}:(\d+)[:,]", result.stderr)}


class Runner:
    """Runs test programs with and without a fault."""

    def __init__(self, work):
        self.work = work
        self.usual = {}  # program: (seconds, numbers of the faults that it comes by)

    def programs_of(self, file):
        own = self._own_programs(file)
        if self.work.options.tests == ["all"]:
            return own + sorted(self._known_targets() - set(own), key=lambda name: self.usual.get(name, (0,))[0])
        return self.work.options.tests or own

    def _own_programs(self, file):
        known = self._known_targets()
        for folder in pathlib.PurePath(file).parents:
            suffix = str(folder).replace("/", "_")
            if own := [name for name in (f"test_{suffix}", f"test_{suffix}_live") if name in known]:
                return own
        return []

    def _known_targets(self):
        if not hasattr(self, "targets"):
            listed = run(["ninja", "-C", str(self.work.build), "-t", "targets", "all"]).stdout
            self.targets = set(re.findall(r"^(test_\w+): phony", listed, re.MULTILINE))
        return self.targets

    def run(self, program, number=0, trace=None, timeout=None):
        """Whether the program's tests pass; "" if they do, else how they failed."""
        environment = {**os.environ, "VELMORA_FAULT": str(number)}
        if trace is not None:
            environment["VELMORA_FAULT_TRACE"] = str(trace)
        words = [str(self.work.build / "tests" / program), "--gtest_brief=1"] + ["--gtest_fail_fast"] * (number > 0)
        process = subprocess.Popen(
            words,
            cwd=self.work.build / "tests",
            env=environment,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            start_new_session=True,
        )
        try:
            output, _ = process.communicate(timeout=timeout)
        except BaseException as stop:
            os.killpg(process.pid, signal.SIGKILL)
            process.communicate()
            if isinstance(stop, subprocess.TimeoutExpired):
                return "time-out"
            raise
        if process.returncode == 0:
            return ""
        failed = re.search(r"\[  FAILED  \] (\S+)", output.decode(errors="replace"))
        return failed.group(1) if failed else f"exit status {process.returncode}"

    def measure(self, program):
        trace = self.work.folder / f"{program}.trace"
        trace.unlink(missing_ok=True)
        start = time.monotonic()
        failure = self.run(program, trace=trace)
        if failure:
            sys.exit(f"mutate: {program} fails without any fault ({failure})")
        reached = {int(line) for line in trace.read_text().split()} if trace.exists() else set()
        self.usual[program] = (time.monotonic() - start, reached)

    def judge(self, fault):
        """What became of the fault: killed by whom, survived, or not reached by any test."""
        reached = False
        for program in self.programs_of(fault["file"]):
            seconds, numbers = self.usual[program]
            if fault["number"] not in numbers:
                continue
            reached = True
            failure = self.run(program, fault["number"], timeout=3 * seconds + PATIENCE)
            if failure:
                return {"outcome": "killed", "by": f"{program}: {failure}"}
        return {"outcome": "survived" if reached else "not reached"}


def make_plan(work):
    if work.plan.exists():
        return json.loads(work.plan.read_text())
    work.folder.mkdir(parents=True, exist_ok=True)
    work.make_copy()
    work.configure()
    planted = Planter(work).plant(work.options.seed, work.options.count)
    plan = [{"number": f.number, "file": f.file, "line": f.line, "rule": f.rule, "shown": f.shown, "place": f.place} for f in planted]
    unfinished = work.plan.with_suffix(".part")
    unfinished.write_text(json.dumps(plan, indent=1))
    unfinished.rename(work.plan)
    return plan


def known_results(work):
    """By number; the last line of a stopped run may be cut."""
    found = {}
    for line in work.results.read_text().splitlines() if work.results.exists() else []:
        try:
            result = json.loads(line)
        except json.JSONDecodeError:
            continue
        found[result["number"]] = result
    return found


def report(plan, results):
    say("")
    for outcome in ("survived", "not reached"):
        for fault in plan:
            if results[fault["number"]]["outcome"] == outcome:
                say(f"{outcome}: src/{fault['file']}:{fault['line']}: {fault['rule']}: {fault['shown']}")
    say("")
    for rule in sorted({fault["rule"] for fault in plan}):
        outcomes = [results[fault["number"]]["outcome"] for fault in plan if fault["rule"] == rule]
        say(f"{rule}: {outcomes.count('killed')} of {len(outcomes)} killed")
    outcomes = [results[fault["number"]]["outcome"] for fault in plan]
    say(
        f"{len(plan)} faults: {outcomes.count('killed')} killed, {outcomes.count('survived')} survived, "
        f"{outcomes.count('not reached')} not reached"
    )


def main():
    work = Work(command_line())
    plan = make_plan(work)
    if not plan:
        sys.exit("mutate: there is no place for a fault")
    say(f"results are kept in {work.folder}")
    runner = Runner(work)
    results = known_results(work)
    programs = sorted({program for fault in plan for program in runner.programs_of(fault["file"])})
    if not programs:
        sys.exit("mutate: these folders have no tests of their own; name some by --tests")
    say("building " + " ".join(programs))
    must("building", ["cmake", "--build", str(work.build), "--target", *programs], work.folder / "build.log")
    open_ones = [fault for fault in plan if fault["number"] not in results]
    for program in programs if open_ones else []:
        runner.measure(program)
    with open(work.results, "a", encoding="utf-8") as out:
        for index, fault in enumerate(open_ones, 1):
            result = {"number": fault["number"], **runner.judge(fault)}
            results[fault["number"]] = result
            out.write("\n" * (index == 1) + json.dumps(result) + "\n")
            out.flush()
            say(f"{index}/{len(open_ones)} {result['outcome']} src/{fault['file']}:{fault['line']} {fault['rule']}")
    report(plan, results)


if __name__ == "__main__":
    try:
        main()
    except KeyboardInterrupt:
        sys.exit("mutate: stopped; the same command goes on from here")
