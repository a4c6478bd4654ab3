// SPDX-License-Identifier: MIT
#include "run.h"

#include <chrono>
#include <filesystem>
#include <limits>
#include <new>
#include <ostream>
#include <sstream>

#include "arguments.h"
#include "complaint.h"
#include "copying.h"
#include "progress_line.h"
#include "report.h"
#include "sample_tree.h"
#include "survey.h"

namespace scanshelf {

using KV_1_1::Directory;
using KV_1_1::File;
using KV_1_1::SmartPtr;
using KV_1_1::String;

namespace {

using Clock = ProgressLine::Clock;

// Where the user is told how far the work has come.
struct Console {
  std::ostream& stream;
  bool isTerminal;
};

struct Report {
  std::ostringstream text;
  Status status = Status::Done;
};

String quoted(String const& text) {
  return KVW("'") + text + KVW("'");
}

// The folder that the user named, absolute; it may be missing.
SmartPtr<Directory const> folderOf(String const& text) {
  SmartPtr<Directory const> const folder = Directory::fromString(text);
  if (!folder || text.length() == 0) throw Complaint(quoted(text) + KVW(" cannot be the name of a folder."));
  SmartPtr<Directory const> const absolute = folder->makeAbsolute();
  if (!absolute) throw Complaint(quoted(text) + KVW(" leads nowhere from the current folder."));
  if (absolute->exists()) return absolute;

  SmartPtr<File const> const file = File::fromString(text);
  if (file && file->exists()) throw Complaint(quoted(text) + KVW(" is a file, not a folder."));
  return absolute;
}

SmartPtr<Directory const> findFolder(String const& text) {
  SmartPtr<Directory const> const folder = folderOf(text);
  if (!folder->exists()) throw Complaint(KVW("There is no folder ") + quoted(text) + KVW("."));
  return folder;
}

// Null if the user named none.
SmartPtr<Directory const> findTarget(String const& text, Directory const& source) {
  if (text == String::NIL) return nullptr;
  SmartPtr<Directory const> const target = folderOf(text);
  if (isWithin(*target, source)) {
    throw Complaint(quoted(text) + KVW(" is the folder to be copied, or lies in it. Choose a target outside of it."));
  }
  return target;
}

void reportCopy(Report& report, Survey const& found, CopyRequest const& request, Arguments const& arguments,
                Console const& console) {
  Clock::time_point const start = Clock::now();
  CopyResult result;
  {
    ProgressLine line(console.stream, console.isTerminal);
    result = copyItems(found, request, [&](Totals const& done) { line.showCopied(done, found.all); });
  }
  auto const duration = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
  report.text << '\n';
  printCopy(report.text, result, found.all, *request.target, duration, arguments.unixNames);
  if (!result.failures.empty()) report.status = Status::Failed;
}

// The target is null if nothing is to be copied.
void reportFolder(Report& report, SmartPtr<Directory const> const& folder, SmartPtr<Directory const> const& target,
                  Arguments const& arguments, Console const& console) {
  std::size_t const largest = arguments.all ? std::numeric_limits<std::size_t>::max() : kListLength;
  Survey found;
  {
    ProgressLine line(console.stream, console.isTerminal);
    found = survey({folder, arguments.pattern, largest, /*keepItems=*/arguments.renumber || target},
                   [&line](Totals const& totals) { line.showFound(totals); });
  }
  if (arguments.renumber) {
    printRenumbering(report.text, found, folder, arguments);
    return;
  }
  printNames(report.text, *folder);
  printSurvey(report.text, found, folder, arguments);
  if (target) reportCopy(report, found, {folder, target, arguments.overwrite}, arguments, console);
}

void reportSample(Report& report, Arguments const& arguments, Console const& console) {
  SampleTree sample;
  SmartPtr<Directory const> target = findTarget(arguments.copyTo, *sample.folder());
  bool const copyIsSample = !target && !arguments.renumber;
  if (copyIsSample) target = sample.copyFolder();
  report.text << "A sample of scans, made for this report and removed again" << (copyIsSample ? ", like its copy" : "")
              << ":\n\n";
  reportFolder(report, sample.folder(), target, arguments, console);
  sample.remove();
}

// The report is complete, and a sample gone, before anything is written: a reader who closes the pipe early would end
// the program.
void makeReport(Report& report, Arguments const& arguments, Console const& console) {
  if (arguments.help) {
    report.text << helpText();
  } else if (arguments.folder == String::NIL) {
    reportSample(report, arguments, console);
  } else {
    SmartPtr<Directory const> const folder = findFolder(arguments.folder);
    reportFolder(report, folder, findTarget(arguments.copyTo, *folder), arguments, console);
  }
}

}  // namespace

int run(std::vector<String> const& words, std::ostream& out, std::ostream& err, bool isErrTerminal) {
  Status status = Status::Failed;
  try {
    Report report;
    makeReport(report, readArguments(words), {err, isErrTerminal});
    out << report.text.str() << std::flush;
    if (!out) throw Complaint(KVW("The report could not be written."));
    return static_cast<int>(report.status);
  } catch (Complaint const& complaint) {
    err << "scanshelf: " << complaint.what() << '\n';
    status = complaint.status();
  } catch (std::filesystem::filesystem_error const& fault) {
    err << "scanshelf: The sample could not be made: " << fault.code().message() << ".\n";
  } catch (std::bad_alloc const&) {
    err << "scanshelf: There is not enough memory.\n";
  }
  if (status == Status::Misused) err << "Try 'scanshelf --help'.\n";
  return static_cast<int>(status);
}

}  // namespace scanshelf
