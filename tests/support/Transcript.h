// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Transcripts: cases as files that hold what is given, what is run, and what comes of it. Such a file is a list of
// steps, which run in an empty folder:
//
//   # a comment
//   file NAME      the indented lines below become this file, in a folder if the name has one
//   $ ARGUMENTS    the companion runs; '...' quotes. Below stands what it gives: its results indented, a line of
//                  "? QUESTION" for each question, a line of "! TEXT" for each one on standard error, and "= N" for an
//                  exit status other than 0
//   < TEXT         among the lines of a run: the answer to a question; ^D ends the input; without any there is no
//                  terminal to ask on
//   show NAME      the indented lines below are this file
//
// Programs of tests have further steps. "…" stands for any text within a line, and alone for any number of lines. Bytes
// that a page cannot show are written <1B>, and a CR as ␍. JSON has a line for each of its objects. FOLDER is the path
// of the folder.

#include <functional>
#include <string>
#include <vector>

namespace velmora::testing {

// What a run of the companion gave.
struct TAnswer {
  int status = 0;
  std::string out;
  std::string err;
};

// Answers a question of the companion.
using TAsk = std::function<std::string(const std::string& question, bool secret)>;

// What the steps of a transcript do.
struct TStepRunner {
  std::function<TAnswer(const std::vector<std::string>& arguments, TAsk ask)> run;
  // Further steps: gives what stands below "WORD REST", of which `below` is given.
  std::function<std::string(const std::string& word, const std::string& rest, const std::string& below)> further = {};
};

// The names of the transcripts in a folder, without their ending .txt.
std::vector<std::string> TranscriptNames(const std::string& folder);

// Runs a transcript and gives what differs, line by line; empty where nothing does. With VELMORA_RECORD in the
// environment the file is written anew as it should have been; what changes from run to run is then to be made "…".
std::string TranscriptDifference(const std::string& path, const TStepRunner& runner);

}  // namespace velmora::testing
