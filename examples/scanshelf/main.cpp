// SPDX-License-Identifier: MIT
#include <filesystem>
#include <iostream>
#include <new>
#include <sstream>

#include "kvbase/modules/client_module.h"
#include "sample_tree.h"
#include "scanshelf.h"

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace scanshelf {
namespace {

enum ExitStatus { kDone = 0, kFailed = 1, kMisused = 2 };

// The folder that the user named, absolute; it may be missing.
SmartPtr<Directory const> folderOf(String const& text) {
  SmartPtr<Directory const> const folder = Directory::fromString(text);
  if (!folder || text.length() == 0) throw Error(textOf(IDS_NO_FOLDER_NAME, text));
  SmartPtr<Directory const> const absolute = folder->makeAbsolute();
  if (!absolute) throw Error(textOf(IDS_LEADS_NOWHERE, text));

  SmartPtr<File const> const file = File::fromString(text);
  if (!absolute->exists() && file && file->exists()) throw Error(textOf(IDS_IS_A_FILE, text));
  return absolute;
}

// The folder to copy to; null if the user named none.
SmartPtr<Directory const> targetFor(Directory const& source, String const& text) {
  if (text == String::NIL) return nullptr;
  SmartPtr<Directory const> const target = folderOf(text);
  if (isWithin(*target, source)) throw Error(textOf(IDS_TARGET_INSIDE, text));
  return target;
}

// The functions that report return whether everything was copied that was to be copied. Without a target, which may be
// null, nothing is.
bool reportFolder(std::ostream& report, SmartPtr<Directory const> const& folder,
                  SmartPtr<Directory const> const& target, Arguments const& arguments, Console const& console) {
  Survey const found = survey(folder, arguments.pattern, progressOn(console));
  if (arguments.assertHeaders) {
    checkHeaders(found);
    return true;
  }
  if (arguments.renumber) {
    printRenumbering(report, found, arguments);
    return true;
  }
  printSurvey(report, found, arguments);
  if (!target) return true;

  auto const start = std::chrono::steady_clock::now();
  CopyResult const result = copyItems(found, *target, arguments.overwrite, progressOn(console, &found.all));
  auto const duration = std::chrono::steady_clock::now() - start;
  report << '\n';
  printCopy(report, result, found.all, *target, duration, arguments.unixNames);
  return result.failures.empty();
}

bool reportSample(std::ostream& report, Arguments const& arguments, Console const& console) {
  SampleTree const sample;
  SmartPtr<Directory const> target = targetFor(*sample.folder(), arguments.copyTo);
  bool const copyIsSample = !target && !arguments.renumber;
  if (copyIsSample) target = sample.copyFolder();
  report << utf8(textOf(copyIsSample ? IDS_SAMPLE_TITLE_COPIED : IDS_SAMPLE_TITLE)) << "\n\n";
  bool const done = reportFolder(report, sample.folder(), target, arguments, console);
  sample.remove();
  return done;
}

bool writeReport(std::ostream& report, Arguments const& arguments, Console const& console) {
  if (arguments.help) {
    report << utf8(helpText());
    return true;
  }
  if (arguments.resources) {
    printResources(report, arguments.all);
    return true;
  }
  if (arguments.stack) {
    printStack(report);
    return true;
  }
  if (arguments.folder == String::NIL) return reportSample(report, arguments, console);
  SmartPtr<Directory const> const folder = folderOf(arguments.folder);
  if (!folder->exists()) throw Error(textOf(IDS_NO_SUCH_FOLDER, arguments.folder));
  return reportFolder(report, folder, targetFor(*folder, arguments.copyTo), arguments, console);
}

// The program behind main: takes the words of the command line, and returns the exit status.
int run(std::vector<String> const& words, std::ostream& out, std::ostream& err, bool isErrTerminal) {
  try {
    Arguments const arguments = readArguments(words);
    // The report is complete, and a sample removed, before anything is written: if the reader closes the pipe early,
    // the program ends at once.
    std::ostringstream report;
    bool const done = writeReport(report, arguments, {err, isErrTerminal});
    if (!(out << report.str() << std::flush)) throw Error(textOf(IDS_REPORT_NOT_WRITTEN));
    return done ? kDone : kFailed;
  } catch (UsageError const& error) {
    err << "scanshelf: " << error.what() << '\n' << utf8(textOf(IDS_TRY_HELP)) << '\n';
    return kMisused;
  } catch (InvalidHeader const& header) {
    reportHeader(header);
    err << '\n';
  } catch (std::filesystem::filesystem_error const& error) {
    String const reason{CodePageInterface(error.code().message().c_str(), 0)};
    err << "scanshelf: " << utf8(textOf(IDS_SAMPLE_NOT_MADE, reason)) << '\n';
  } catch (Error const& error) {
    err << "scanshelf: " << error.what() << '\n';
  } catch (std::bad_alloc const&) {
    err << "scanshelf: " << utf8(textOf(IDS_NO_MEMORY)) << '\n';
  }
  return kFailed;
}

}  // namespace
}  // namespace scanshelf

int main(int argc, char** argv) {
  // The program is a module of the family: its texts come in the user's language.
  KV_1_1::ModuleOwner owner;
  KV_1_1::ProgramStart const started(owner);
  scanshelf::takeTextsFrom(owner.module());

  // The words come in the code page of the process, which number 0 stands for on every system.
  std::vector<KV_1_1::String> words;
  for (int i = 1; i < argc; ++i) words.emplace_back(KV_1_1::CodePageInterface(argv[i], 0));
#if defined(_WIN32)
  bool const isErrTerminal = _isatty(2) != 0;
#else
  bool const isErrTerminal = isatty(2) != 0;
#endif
  return scanshelf::run(words, std::cout, std::cerr, isErrTerminal);
}
