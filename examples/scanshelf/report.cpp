// SPDX-License-Identifier: MIT
#include "report.h"

#include <algorithm>
#include <ostream>
#include <tuple>
#include <utility>

#include "renumbering.h"
#include "table.h"
#include "text.h"

namespace scanshelf {

using KV_1_1::Directory;
using KV_1_1::File;
using KV_1_1::FileSystemItem;
using KV_1_1::SmartPtr;
using KV_1_1::String;
using KV_1_1::wchar;

namespace {

constexpr int kNameWidth = 40;
constexpr int kGap = 2;  // before each column
constexpr int kSizeWidth = 9;
constexpr int kPathWidth = kLineWidth - kGap - kSizeWidth - kGap;
constexpr int kRenumberedWidth = 30;
constexpr int kFolderWidth = kLineWidth - 2 * (kGap + kRenumberedWidth) - kGap;

String orNone(String const& text) {
  return text.length() > 0 ? text : String(KVW("none"));
}

// The folder as seen from where the user is.
String relativeName(Directory const& folder) {
  SmartPtr<Directory const> const here = Directory::fromString(String::EMPTY)->makeAbsolute();
  SmartPtr<Directory const> const relative = here ? folder.makeRelative(here) : nullptr;
  return relative ? relative->getFullName() : String::NIL;
}

SmartPtr<File const> relativeTo(SmartPtr<Directory const> const& folder, SmartPtr<File const> const& file) {
  SmartPtr<File const> const relative = file->makeRelative(folder);
  return relative ? relative : file;
}

// The path in at most `width` places. Shortening goes by slashes, so it comes before the notation of Windows.
String pathText(FileSystemItem const& item, int width, bool unixNames) {
  String path = shortenPath(item.getFullNameUnix(), width);
  if (!unixNames) path.replace(KVW('/'), KVW('\\'));
  return path;
}

// The largest first. What is behind the first `limit` becomes one group, unless that would save no line.
std::vector<Group> largestGroups(std::vector<Group> groups, std::size_t limit) {
  std::sort(groups.begin(), groups.end(), [](Group const& a, Group const& b) {
    return std::tie(b.totals.bytes, b.totals.files, a.name) < std::tie(a.totals.bytes, a.totals.files, b.name);
  });
  if (groups.size() <= limit + 1) return groups;

  Group rest = {KVW("(") + countText(groups.size() - limit) + KVW(" more)"), Totals()};
  for (std::size_t i = limit; i < groups.size(); ++i) {
    rest.totals.files += groups[i].totals.files;
    rest.totals.folders += groups[i].totals.folders;
    rest.totals.bytes += groups[i].totals.bytes;
  }
  groups.resize(limit);
  groups.push_back(rest);
  return groups;
}

std::size_t listLength(Arguments const& arguments, std::size_t available) {
  return arguments.all ? available : kListLength;
}

void printExtensions(std::ostream& out, Survey const& survey, Arguments const& arguments) {
  std::vector<Group> groups;
  for (auto const& [extension, totals] : survey.byExtension) {
    groups.push_back({extension.length() > 0 ? KVW(".") + extension : String(KVW("(none)")), totals});
  }
  if (groups.empty()) return;
  Table table({{KVW("Extension"), Align::Left}, {KVW("Files"), Align::Right}, {KVW("Size"), Align::Right}});
  for (Group const& group : largestGroups(std::move(groups), listLength(arguments, survey.byExtension.size()))) {
    table.add({shorten(group.name, kNameWidth), countText(group.totals.files), sizeText(group.totals.bytes)});
  }
  table.print(out);
  out << '\n';
}

void printFolders(std::ostream& out, Survey const& survey, Arguments const& arguments) {
  if (survey.byFolder.empty()) return;
  Table table({{KVW("Folder"), Align::Left},
               {KVW("Files"), Align::Right},
               {KVW("Folders"), Align::Right},
               {KVW("Size"), Align::Right}});
  std::vector<Group> groups = largestGroups(survey.byFolder, listLength(arguments, survey.byFolder.size()));
  groups.push_back({KVW("(directly in it)"), survey.direct});
  for (Group const& group : groups) {
    table.add({shorten(group.name, kNameWidth), countText(group.totals.files), countText(group.totals.folders),
               sizeText(group.totals.bytes)});
  }
  table.print(out);
  out << '\n';
}

void printLargest(std::ostream& out, Survey const& survey, SmartPtr<Directory const> const& folder, bool unixNames) {
  if (survey.largest.empty()) return;
  bool const isComplete = survey.largest.size() == survey.all.files;
  Table table({{KVW("Size"), Align::Right}, {isComplete ? KVW("File") : KVW("Largest files"), Align::Left}});
  for (FoundFile const& found : survey.largest) {
    table.add({sizeText(found.bytes), pathText(*relativeTo(folder, found.file), kPathWidth, unixNames)});
  }
  table.print(out);
  out << '\n';
}

struct NamedFile {
  String path;
  SmartPtr<File const> file;

  bool operator<(NamedFile const& other) const {
    int const order = path.compareIgnoreCase(other.path);
    return order != 0 ? order < 0 : path < other.path;
  }
};

// All files, relative to the folder and in the order of their paths.
std::vector<NamedFile> filesByPath(Survey const& survey, SmartPtr<Directory const> const& folder) {
  std::vector<NamedFile> files;
  for (FoundFile const& found : survey.files) {
    SmartPtr<File const> const file = relativeTo(folder, found.file);
    files.push_back({file->getFullNameUnix(), file});
  }
  std::sort(files.begin(), files.end());
  return files;
}

void printSteppedNames(std::ostream& out, std::vector<NamedFile> const& files, std::size_t shown, bool unixNames) {
  Table table({{KVW("Name now"), Align::Left}, {KVW("Name after"), Align::Left}, {KVW("Folder"), Align::Left}});
  for (std::size_t i = 0; i < shown; ++i) {
    File const& file = *files[i].file;
    String const after = steppedName(file);
    table.add({shorten(file.getName(), kRenumberedWidth),
               after == String::NIL ? String(KVW("(number too large)")) : shorten(after, kRenumberedWidth),
               pathText(*file.getDirectory(), kFolderWidth, unixNames)});
  }
  table.print(out);
  if (shown < files.size()) out << "  (" << utf8(countText(files.size() - shown)) << " more)\n";
  out << '\n';
}

void printSummary(std::ostream& out, Survey const& survey, String const& pattern) {
  Totals const& all = survey.all;
  if (all.files == 0) {
    out << "No file matches " << utf8(pattern);
  } else {
    out << utf8(countOf(all.files, KVW("file"))) << (all.files == 1 ? " matches " : " match ") << utf8(pattern) << ", "
        << utf8(sizeText(all.bytes)) << " in all";
  }
  out << "; " << utf8(countOf(all.folders + 1, KVW("folder"))) << " searched.\n";
  if (survey.unmeasured > 0) {
    out << "The size of " << utf8(countOf(survey.unmeasured, KVW("file"))) << " could not be told.\n";
  }
}

struct LabelledLine {
  wchar const* label;
  String text;
};

template <std::size_t Size>
void printLines(std::ostream& out, LabelledLine const (&lines)[Size]) {
  Table table({{String::EMPTY, Align::Left}, {String::EMPTY, Align::Left}});
  for (LabelledLine const& line : lines) table.add({line.label, line.text});
  table.print(out);
  out << '\n';
}

String partOf(String const& part, String const& all) {
  return part + KVW(" of ") + all;
}

// The time, and the speed if it is more than chance.
String paceText(std::uint64_t bytes, std::chrono::milliseconds duration) {
  constexpr std::chrono::milliseconds kTelling(500);
  String const time = durationText(duration);
  if (duration < kTelling) return time;
  double const perSecond = static_cast<double>(bytes) * 1000 / static_cast<double>(duration.count());
  return time + KVW(", ") + sizeText(static_cast<std::uint64_t>(perSecond)) + KVW("/s");
}

// Nothing is shortened: the user has to find each item. The reasons are the system's.
void printFailures(std::ostream& out, CopyResult const& result, bool unixNames) {
  out << "Not everything could be copied:\n\n";
  Table table({{KVW("Reason"), Align::Left}, {KVW("Item"), Align::Left}});
  for (auto const& [item, reason] : result.failures) {
    table.add({reason, unixNames ? item->getFullNameUnix() : item->getFullName()});
  }
  table.print(out);
  if (result.untried > 0) {
    out << "\nThe disk is full. Not tried any more: " << utf8(countOf(result.untried, KVW("file"))) << ".\n";
  }
}

}  // namespace

void printNames(std::ostream& out, Directory const& folder) {
  SmartPtr<Directory const> const parent = folder.getParent();
  LabelledLine const lines[] = {
      {KVW("Folder"), folder.getFullName()},
      {KVW("Unix name"), folder.getFullNameUnix()},
      {KVW("Long path"), folder.getFullNameUnicode()},
      {KVW("From here"), orNone(relativeName(folder))},
      {KVW("Parent"), parent ? parent->getFullName() : orNone(String::NIL)},
      {KVW("Name"), folder.getName()},
      {KVW("Root"), orNone(folder.getRoot())},
  };
  printLines(out, lines);
}

void printSurvey(std::ostream& out, Survey const& survey, SmartPtr<Directory const> const& folder,
                 Arguments const& arguments) {
  printExtensions(out, survey, arguments);
  printFolders(out, survey, arguments);
  printLargest(out, survey, folder, arguments.unixNames);
  printSummary(out, survey, arguments.pattern);
}

void printRenumbering(std::ostream& out, Survey const& survey, SmartPtr<Directory const> const& folder,
                      Arguments const& arguments) {
  std::vector<NamedFile> const files = filesByPath(survey, folder);
  std::size_t const limit = listLength(arguments, files.size());
  if (!files.empty()) {
    // One line more takes no more room than telling that there is one.
    out << "Nothing is renamed. This is what the names would be with their numbers one higher:\n\n";
    printSteppedNames(out, files, files.size() <= limit + 1 ? files.size() : limit, arguments.unixNames);
  }
  printSummary(out, survey, arguments.pattern);
}

void printCopy(std::ostream& out, CopyResult const& result, Totals const& all, Directory const& target,
               std::chrono::milliseconds duration, bool unixNames) {
  Totals const& copied = result.copied;
  LabelledLine const lines[] = {
      {KVW("Copied to"), unixNames ? target.getFullNameUnix() : target.getFullName()},
      {KVW("Files"), partOf(countText(copied.files), countText(all.files))},
      {KVW("Folders"), partOf(countText(copied.folders), countText(all.folders))},
      {KVW("Bytes"), partOf(sizeText(copied.bytes), sizeText(all.bytes))},
      {KVW("Sizes equal"), partOf(countText(result.equalSizes), countText(copied.files))},
      {KVW("Time"), paceText(copied.bytes, duration)},
  };
  printLines(out, lines);
  if (result.failures.empty()) {
    out << (all.files > 0 ? "Everything was copied, and all sizes are equal.\n" : "There was no file to copy.\n");
  } else {
    printFailures(out, result, unixNames);
  }
}

}  // namespace scanshelf
