// SPDX-License-Identifier: MIT
#include "scanshelf.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace scanshelf {
namespace {

using Row = std::vector<String>;
using Group = std::pair<String, Totals>;

struct IgnoringCase {
  bool operator()(String const& a, String const& b) const { return a.compareIgnoreCase(b) < 0; }
};

// No line of a list is wider than 100 columns.
constexpr int kGroupWidth = 40;
constexpr int kPathWidth = 87;
constexpr int kRenumberedWidth = 30;
constexpr int kFolderWidth = 34;

// The path in at most `width` columns. It is shortened first, because that needs slashes.
String pathText(FileSystemItem const& item, int width, bool unixNames) {
  String path = shorten(item.getFullNameUnix(), width);
  if (!unixNames) path.replace(KVW('/'), KVW('\\'));
  return path;
}

// Prints the groups, the largest first. Those that are not shown become one. `direct` is the last line, if not null;
// without it there is no column of folders.
void printGroups(std::ostream& out, unsigned title, std::vector<Group> groups, bool all, Group const* direct) {
  std::sort(groups.begin(), groups.end(), [](Group const& a, Group const& b) {
    return std::tie(b.second.bytes, b.second.files, a.first) < std::tie(a.second.bytes, a.second.files, b.first);
  });
  std::size_t const shown = shownOf(groups.size(), all);
  if (shown < groups.size()) {
    Group rest = {textOf(IDS_COUNT_MORE, countText(groups.size() - shown)), Totals()};
    for (std::size_t i = shown; i < groups.size(); ++i) rest.second += groups[i].second;
    groups.resize(shown);
    groups.push_back(rest);
  }
  if (direct != nullptr) groups.push_back(*direct);

  std::vector<Row> rows = {
      {textOf(title), textOf(IDS_COLUMN_FILES), textOf(IDS_COLUMN_FOLDERS), textOf(IDS_COLUMN_SIZE)}};
  for (auto const& [name, totals] : groups) {
    rows.push_back(
        {shorten(name, kGroupWidth), countText(totals.files), countText(totals.folders), sizeText(totals.bytes)});
  }
  for (Row& row : rows) {
    if (direct == nullptr) row.erase(row.begin() + 2);
  }
  printTable(out, direct != nullptr ? "lrrr" : "lrr", rows);
  out << '\n';
}

void printExtensions(std::ostream& out, Survey const& survey, bool all) {
  std::map<String, Totals, IgnoringCase> groups;
  for (auto const& [file, bytes] : survey.files) {
    String const extension = file->getExtension();
    groups[extension.length() > 0 ? KVW(".") + extension : textOf(IDS_NO_EXTENSION)] += {1, 0, bytes};
  }
  if (!groups.empty()) printGroups(out, IDS_COLUMN_EXTENSION, {groups.begin(), groups.end()}, all, nullptr);
}

// Groups by the first name of each path, which is a dot for the files directly in the folder.
void printFolders(std::ostream& out, Survey const& survey, bool all) {
  std::map<String, Totals> groups;
  for (SmartPtr<Directory const> const& folder : survey.folders) {
    String const path = folder->makeRelative(survey.folder)->getFullNameUnix();
    int const slash = path.find(KVW('/'));
    groups[path.substr(0, slash)].folders += slash + 1 < path.length() ? 1 : 0;
  }
  for (auto const& [file, bytes] : survey.files) {
    String const path = file->makeRelative(survey.folder)->getFullNameUnix();
    groups[path.substr(0, path.find(KVW('/')))] += {1, 0, bytes};
  }
  Group const direct = {textOf(IDS_DIRECTLY_IN_IT), groups[KVW(".")]};
  groups.erase(KVW("."));
  if (!groups.empty()) printGroups(out, IDS_FOLDER, {groups.begin(), groups.end()}, all, &direct);
}

void printLargest(std::ostream& out, Survey const& survey, Arguments const& arguments) {
  if (survey.files.empty()) return;
  std::vector<FoundFile> files = survey.files;
  std::stable_sort(files.begin(), files.end(), [](auto const& a, auto const& b) { return a.bytes > b.bytes; });
  if (!arguments.all && files.size() > kListLength) files.resize(kListLength);
  bool const areAll = files.size() == survey.files.size();
  std::vector<Row> rows = {{textOf(IDS_COLUMN_SIZE), textOf(areAll ? IDS_COLUMN_FILE : IDS_COLUMN_LARGEST_FILES)}};
  for (auto const& [file, bytes] : files) {
    rows.push_back({sizeText(bytes), pathText(*file->makeRelative(survey.folder), kPathWidth, arguments.unixNames)});
  }
  printTable(out, "rl", rows);
  out << '\n';
}

void printSummary(std::ostream& out, Survey const& survey, String const& pattern) {
  auto const& [files, folders, bytes] = survey.all;
  String const searched = countOf(folders + 1, kFolders);
  String text = textOf(IDS_NO_FILE_MATCHES, pattern, searched);
  if (files == 1) text = textOf(IDS_ONE_FILE_MATCHES, pattern, sizeText(bytes), searched);
  if (files > 1) text = textOf(IDS_FILES_MATCH, countText(files), pattern, sizeText(bytes), searched);
  printLine(out, text);
  if (survey.unmeasured > 0) printLine(out, textOf(IDS_SIZES_UNKNOWN, countOf(survey.unmeasured, kFiles)));
}

// The name of the file with the number at the end of its base name incremented.
String renumberedName(File const& file) {
  constexpr unsigned kLargestIndex = 2147483647;  // stands for larger numbers too
  String name = file.getBaseName();
  if (name.getIndex() == kLargestIndex) return textOf(IDS_NUMBER_TOO_LARGE);
  name.incrementIndex();
  String const extension = file.getExtension();
  return extension.length() > 0 ? name + KVW(".") + extension : name;
}

// The time, and the speed if the time is long enough to measure it.
String paceText(std::uint64_t bytes, std::chrono::nanoseconds duration) {
  String const time = durationText(std::chrono::duration_cast<std::chrono::milliseconds>(duration));
  if (duration < std::chrono::milliseconds(500)) return time;
  double const perSecond = static_cast<double>(bytes) / std::chrono::duration<double>(duration).count();
  return time + KVW(", ") + sizeText(static_cast<std::uint64_t>(perSecond)) + KVW("/s");
}

// Nothing is shortened, because the user has to find each item.
void printFailures(std::ostream& out, CopyResult const& result, bool unixNames) {
  printLine(out, textOf(IDS_NOT_ALL_COPIED));
  out << '\n';
  std::vector<Row> rows = {{textOf(IDS_COLUMN_REASON), textOf(IDS_COLUMN_ITEM)}};
  for (auto const& [item, reason] : result.failures) {
    rows.push_back({reason, unixNames ? item->getFullNameUnix() : item->getFullName()});
  }
  printTable(out, "ll", rows);
  if (result.unattempted == 0) return;
  out << '\n';
  printLine(out, textOf(IDS_DISK_FULL, countOf(result.unattempted, kFiles)));
}

}  // namespace

void printSurvey(std::ostream& out, Survey const& survey, Arguments const& arguments) {
  Directory const& folder = *survey.folder;
  String const none = textOf(IDS_NONE);
  SmartPtr<Directory const> const relative = folder.makeRelative(Directory::fromString(String::EMPTY));
  SmartPtr<Directory const> const parent = folder.getParent();
  String const root = folder.getRoot();
  printTable(out, "ll",
             {{textOf(IDS_FOLDER), folder.getFullName()},
              {textOf(IDS_UNIX_NAME), folder.getFullNameUnix()},
              {textOf(IDS_LONG_PATH), folder.getFullNameUnicode()},
              {textOf(IDS_FROM_HERE), relative ? relative->getFullName() : none},
              {textOf(IDS_PARENT), parent ? parent->getFullName() : none},
              {textOf(IDS_NAME), folder.getName()},
              {textOf(IDS_ROOT), root.length() > 0 ? root : none}});
  out << '\n';
  printExtensions(out, survey, arguments.all);
  printFolders(out, survey, arguments.all);
  printLargest(out, survey, arguments);
  printSummary(out, survey, arguments.pattern);
}

void printRenumbering(std::ostream& out, Survey const& survey, Arguments const& arguments) {
  std::multimap<String, SmartPtr<File const>, IgnoringCase> files;
  for (FoundFile const& found : survey.files) {
    SmartPtr<File const> const file = found.file->makeRelative(survey.folder);
    files.emplace(file->getFullNameUnix(), file);
  }
  std::size_t const shown = shownOf(files.size(), arguments.all);
  std::vector<Row> rows = {{textOf(IDS_COLUMN_NAME_NOW), textOf(IDS_COLUMN_NAME_AFTER), textOf(IDS_FOLDER)}};
  for (auto const& [path, file] : files) {
    if (rows.size() > shown) break;
    rows.push_back({shorten(file->getName(), kRenumberedWidth), shorten(renumberedName(*file), kRenumberedWidth),
                    pathText(*file->getDirectory(), kFolderWidth, arguments.unixNames)});
  }
  if (shown > 0) {
    printLine(out, textOf(IDS_RENUMBER_TITLE));
    out << '\n';
    printTable(out, "lll", rows);
    if (shown < files.size()) printLine(out, KVW("  ") + textOf(IDS_COUNT_MORE, countText(files.size() - shown)));
    out << '\n';
  }
  printSummary(out, survey, arguments.pattern);
}

void printCopy(std::ostream& out, CopyResult const& result, Totals const& all, Directory const& target,
               std::chrono::nanoseconds duration, bool unixNames) {
  Totals const& copied = result.copied;
  auto const countsOf = [](std::uint64_t part, std::uint64_t whole) {
    return textOf(IDS_COUNT_OF, countText(part), countText(whole));
  };
  printTable(out, "ll",
             {{textOf(IDS_COPIED_TO), unixNames ? target.getFullNameUnix() : target.getFullName()},
              {textOf(IDS_COLUMN_FILES), countsOf(copied.files, all.files)},
              {textOf(IDS_COLUMN_FOLDERS), countsOf(copied.folders, all.folders)},
              {textOf(IDS_BYTES), textOf(IDS_COUNT_OF, sizeText(copied.bytes), sizeText(all.bytes))},
              {textOf(IDS_SIZES_EQUAL), countsOf(result.equalSizes, copied.files)},
              {textOf(IDS_TIME), paceText(copied.bytes, duration)}});
  out << '\n';
  if (!result.failures.empty()) {
    printFailures(out, result, unixNames);
  } else {
    printLine(out, textOf(all.files > 0 ? IDS_ALL_COPIED : IDS_NOTHING_TO_COPY));
  }
}

}  // namespace scanshelf
