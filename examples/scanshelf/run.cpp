// SPDX-License-Identifier: MIT
#include "run.h"

#include <filesystem>
#include <limits>
#include <new>
#include <ostream>
#include <sstream>
#include <string>

#include "arguments.h"
#include "complaint.h"
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

// The folder that the user named, absolute and known to be there.
SmartPtr<Directory const> findFolder(String const& text) {
  String const quoted = KVW("'") + text + KVW("'");
  SmartPtr<Directory const> const folder = Directory::fromString(text);
  if (!folder || text.length() == 0) throw Complaint(quoted + KVW(" cannot be the name of a folder."));

  SmartPtr<Directory const> const absolute = folder->makeAbsolute();
  if (!absolute) throw Complaint(quoted + KVW(" leads nowhere from the current folder."));
  if (absolute->exists()) return absolute;

  SmartPtr<File const> const file = File::fromString(text);
  if (file && file->exists()) throw Complaint(quoted + KVW(" is a file, not a folder."));
  throw Complaint(KVW("There is no folder ") + quoted + KVW("."));
}

void printReport(std::ostream& out, SmartPtr<Directory const> const& folder, Arguments const& arguments,
                 std::ostream& err) {
  std::size_t const largest =
      arguments.all || arguments.renumber ? std::numeric_limits<std::size_t>::max() : kListLength;
  Survey found;
  {
    ProgressLine line(err, isErrorStreamTerminal());
    found = survey({folder, arguments.pattern, largest}, [&line](Totals const& totals) { line.show(totals); });
  }
  if (arguments.renumber) {
    printRenumbering(out, found, folder, arguments);
    return;
  }
  printNames(out, *folder);
  printSurvey(out, found, folder, arguments);
}

// The report is complete, and a sample gone, before anything is written: a reader who closes the pipe early would end
// the program.
std::string makeReport(Arguments const& arguments, std::ostream& err) {
  std::ostringstream report;
  if (arguments.folder != String::NIL) {
    printReport(report, findFolder(arguments.folder), arguments, err);
  } else {
    SampleTree const sample;
    report << "A sample of scans, made for this report and removed again:\n\n";
    printReport(report, sample.folder(), arguments, err);
  }
  return report.str();
}

}  // namespace

int run(std::vector<String> const& words, std::ostream& out, std::ostream& err) {
  Status status = Status::Failed;
  try {
    Arguments const arguments = readArguments(words);
    out << (arguments.help ? helpText() : makeReport(arguments, err)) << std::flush;
    if (!out) throw Complaint(KVW("The report could not be written."));
    return static_cast<int>(Status::Done);
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
