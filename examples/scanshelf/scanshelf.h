// SPDX-License-Identifier: MIT
//
// scanshelf lists what is in a folder of scans, and copies it: an example of a program on KVBase. This header has all
// of its parts in the order in which they build on each other.
#pragma once

#include <kvbase/kvbase.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "resources/symbols.h"

namespace scanshelf {

using namespace KV_1_1;

// --- Text for the user, in the user's language (text.cpp) ------------------------------------------------------------
// Makes `module` the one that has all texts. It must be started, and live as long as texts are asked for.
void takeTextsFrom(Module const& module);
// The text with a number of resources/symbols.h.
// REQUIRES: takeTextsFrom has been called.
String textOf(unsigned id);
String helpText();

// The text as UTF-8; an empty text for NIL. Valid as long as the String.
char const* utf8(String const& text);
// The text that String::printf makes.
template <class... Values>
String format(wchar const* pattern, Values const&... values) {
  String text;
  text.printf(pattern, values...);
  return text;
}

// The same with a text of the module as the pattern.
template <class... Values>
String textOf(unsigned id, Values const&... values) {
  return format(textOf(id), values...);
}

// Ends the program with a message for the user, which is not NIL.
class Error : public std::runtime_error {
 public:
  explicit Error(String const& message) : std::runtime_error(utf8(message)) {}
};

// The texts for one of a kind, and for any other number of them.
struct Noun {
  unsigned one;
  unsigned many;
};
constexpr Noun kFiles = {IDS_ONE_FILE, IDS_FILES};
constexpr Noun kFolders = {IDS_ONE_FOLDER, IDS_FOLDERS};

// Examples are those of the English texts.
//   1234567 => "1,234,567"
String countText(std::uint64_t count);
//   1, kFiles => "1 file"      1200, kFiles => "1,200 files"
String countOf(std::uint64_t count, Noun const& noun);
//   1023 => "1023 B"      1536 => "1.5 KB"      1048575 => "1.0 MB"
String sizeText(std::uint64_t bytes);
//   0 ms => "under 1 ms"      12 ms => "12 ms"      1449 ms => "1.4 s"      65 s => "1 min 5 s"
//   7260 s => "2 h 1 min"
String durationText(std::chrono::milliseconds duration);

// Widths are columns of the terminal, not code units. A combining mark has width 0, and an ideograph width 2. A lone
// surrogate counts as one character of width 1.
int displayWidth(String const& text);
// The text in at most `width` columns. A path with slashes loses folders in its middle; a name, or a path whose last
// name alone is too wide, loses characters. Never cuts a surrogate pair.
//   "scans/2024/March/hall/scan001.dat", 26 => "scans/.../hall/scan001.dat"      "abcdefgh", 5 => "ab…gh"
String shorten(String const& text, int width);

void printLine(std::ostream& out, String const& text);

constexpr std::size_t kListLength = 10;
// How many lines of a list are shown. One more takes no more room than telling that there is one.
std::size_t shownOf(std::size_t available, bool all);

// Prints the rows in columns, each as wide as its widest cell. `alignment` has an l or r for each column of any row.
void printTable(std::ostream& out, char const* alignment, std::vector<std::vector<String>> const& rows);

// --- The command line (arguments.cpp) --------------------------------------------------------------------------------
// What the user asked for on the command line.
struct Arguments {
  String folder;                      // NIL: a sample
  String pattern = String(KVW("*"));  // the files to count
  String copyTo;                      // NIL: only a sample is copied, to a temporary folder
  bool overwrite = false;             // the copy may replace files
  bool all = false;                   // lists are complete
  bool unixNames = false;             // paths are listed with slashes
  bool renumber = false;              // shows the names with their numbers incremented, not the counts
  bool resources = false;             // shows the modules of the program, not a folder
  bool assertHeaders = false;         // only checks whether the files are scans
  bool stack = false;                 // only shows the program's own call stack
  bool help = false;
};

class UsageError : public Error {
  using Error::Error;
};

// Reads the words behind the program's name. Throws a UsageError if it does not understand them. Passes over a language,
// such as -lang=deu, which KVBase has read.
Arguments readArguments(std::vector<String> const& words);

// --- The two tasks: finding what is in a folder, and copying it (folder_tasks.cpp) -----------------------------------
struct Totals {
  std::uint64_t files = 0;
  std::uint64_t folders = 0;
  std::uint64_t bytes = 0;

  Totals& operator+=(Totals const& other) {
    files += other.files;
    folders += other.folders;
    bytes += other.bytes;
    return *this;
  }
};

struct FoundFile {
  SmartPtr<File const> file;
  std::uint64_t bytes;
};

// What was found in a folder and below it. The items are absolute.
struct Survey {
  SmartPtr<Directory const> folder;
  Totals all;
  std::vector<FoundFile> files;
  std::vector<SmartPtr<Directory const>> folders;  // each before those in it
  std::uint64_t unmeasured = 0;                    // files whose size could not be determined
};

// Called now and then with the counts so far.
using Progress = std::function<void(Totals const&)>;

// Finds the files that match the pattern, and all folders. The folder is absolute.
// Throws an Error if the pattern is invalid.
Survey survey(SmartPtr<Directory const> const& folder, String const& pattern, Progress const& progress);

// An item that was not copied properly, and why.
struct Failure {
  SmartPtr<FileSystemItem const> item;  // relative to the folder that is copied
  String reason;
};

struct CopyResult {
  Totals copied;                  // the folders include those that were in the target before
  std::uint64_t equalSizes = 0;   // files copied whose sizes are equal
  std::uint64_t unattempted = 0;  // files left out because the disk was full
  std::vector<Failure> failures;
};

// Whether the folder, which may be missing, is the other one or lies below it, also through links.
// REQUIRES: both are absolute, and `outer` exists.
bool isWithin(Directory const& folder, Directory const& outer);

// Copies what a survey has found into the target, which is absolute and made if it is missing, and compares
// the sizes. What cannot be copied becomes a failure, and the rest is still copied unless the disk is full. The progress
// counts what is finished, copied or not, and moves within a large file too.
// Throws an Error if the target cannot be made.
CopyResult copyItems(Survey const& found, Directory const& target, bool overwrite, Progress const& progress);

// --- Progress while they run (progress_line.cpp) ---------------------------------------------------------------------
struct Console {
  std::ostream& stream;
  bool isTerminal;
};

// Makes a callback that shows the user how far a task has come: what was found so far or, with `all`, how much of that
// is copied. On a terminal this is one line, written from the beginning, overwritten again and again, and cleared with
// the callback. Elsewhere, for instance in a log, lines come at growing intervals, and none in the first second.
Progress progressOn(Console const& console, Totals const* all = nullptr);

// --- The report on them (report.cpp) ---------------------------------------------------------------------------------
// The names of the folder, the lists by extension and by folder, the largest files, and a summary.
void printSurvey(std::ostream& out, Survey const& survey, Arguments const& arguments);
// The names of all files in order, each with the one that it would have after renumbering.
void printRenumbering(std::ostream& out, Survey const& survey, Arguments const& arguments);
// How much of all was copied and how long it took, whether the sizes are equal, and everything that failed.
void printCopy(std::ostream& out, CopyResult const& result, Totals const& all, Directory const& target,
               std::chrono::nanoseconds duration, bool unixNames);

// --- The report on the modules of the program (resource_report.cpp) ---------------------------------------------------
// The files that the texts come from, their versions and languages, the languages in use, and symbols, some or all.
void printResources(std::ostream& out, bool all);

// --- The library's diagnostics (diagnostics.cpp) ---------------------------------------------------------------------
// Prints the calls that have led here, the latest first. Throws an Error if the system cannot tell them.
void printStack(std::ostream& out);

// A file that does not begin as a scan does. It is reported by itself, after everything has been tidied up: the user may
// end the program then.
struct InvalidHeader {
  String file;
  std::string signature;
};
// Throws the InvalidHeader of the first .dat file that has one.
void checkHeaders(Survey const& found);
// Shows the report of an assertion that fails for the header, which has no line feed behind it. Returns if the user
// wants to go on.
void reportHeader(InvalidHeader const& header);

}  // namespace scanshelf
