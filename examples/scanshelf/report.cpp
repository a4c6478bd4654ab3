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

constexpr std::size_t kListLength = 10;

// No line of a list is wider than 100 columns.
constexpr int kGroupWidth = 40;
constexpr int kPathWidth = 87;
constexpr int kRenumberedWidth = 30;
constexpr int kFolderWidth = 34;

// How many lines a list shows. One more takes no more room than telling that there is one.
std::size_t shownOf(std::size_t available, bool all) {
  return all || available <= kListLength + 1 ? available : kListLength;
}

// The path in at most `width` columns. It is shortened first, because that needs slashes.
String pathText(FileSystemItem const& item, int width, bool unixNames) {
  String path = shorten(item.getFullNameUnix(), width);
  if (!unixNames) path.replace(KVW('/'), KVW('\\'));
  return path;
}

// Prints the groups, the largest first. Those that are not shown become one. `direct` is the last line, if not null;
// without it there is no column of folders.
void printGroups(std::ostream& out, wchar const* title, std::vector<Group> groups, bool all, Group const* direct) {
  std::sort(groups.begin(), groups.end(), [](Group const& a, Group const& b) {
    return std::tie(b.second.bytes, b.second.files, a.first) < std::tie(a.second.bytes, a.second.files, b.first);
  });
  std::size_t const shown = shownOf(groups.size(), all);
  if (shown < groups.size()) {
    Group rest = {KVW("(") + countText(groups.size() - shown) + KVW(" more)"), Totals()};
    for (std::size_t i = shown; i < groups.size(); ++i) rest.second += groups[i].second;
    groups.resize(shown);
    groups.push_back(rest);
  }
  if (direct != nullptr) groups.push_back(*direct);

  std::vector<Row> rows = {{title, KVW("Files"), KVW("Folders"), KVW("Size")}};
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
    groups[extension.length() > 0 ? KVW(".") + extension : String(KVW("(none)"))] += {1, 0, bytes};
  }
  if (!groups.empty()) printGroups(out, KVW("Extension"), {groups.begin(), groups.end()}, all, nullptr);
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
  Group const direct = {KVW("(directly in it)"), groups[KVW(".")]};
  groups.erase(KVW("."));
  if (!groups.empty()) printGroups(out, KVW("Folder"), {groups.begin(), groups.end()}, all, &direct);
}

void printLargest(std::ostream& out, Survey const& survey, Arguments const& arguments) {
  if (survey.files.empty()) return;
  std::vector<FoundFile> files = survey.files;
  std::stable_sort(files.begin(), files.end(), [](auto const& a, auto const& b) { return a.bytes > b.bytes; });
  if (!arguments.all && files.size() > kListLength) files.resize(kListLength);
  std::vector<Row> rows = {{KVW("Size"), files.size() == survey.files.size() ? KVW("File") : KVW("Largest files")}};
  for (auto const& [file, bytes] : files) {
    rows.push_back({sizeText(bytes), pathText(*file->makeRelative(survey.folder), kPathWidth, arguments.unixNames)});
  }
  printTable(out, "rl", rows);
  out << '\n';
}

void printSummary(std::ostream& out, Survey const& survey, String const& pattern) {
  auto const& [files, folders, bytes] = survey.all;
  String text = format(KVW("No file matches %ls"), pattern);
  if (files == 1) text = format(KVW("1 file matches %ls, %ls in all"), pattern, sizeText(bytes));
  if (files > 1) text = format(KVW("%ls files match %ls, %ls in all"), countText(files), pattern, sizeText(bytes));
  out << utf8(text) << "; " << utf8(countOf(folders + 1, KVW("folder"))) << " searched.\n";
  if (survey.unmeasured == 0) return;
  out << "The size of " << utf8(countOf(survey.unmeasured, KVW("file"))) << " could not be determined.\n";
}

// The name of the file with the number at the end of its base name incremented.
String renumberedName(File const& file) {
  constexpr unsigned kLargestIndex = 2147483647;  // stands for larger numbers too
  String name = file.getBaseName();
  if (name.getIndex() == kLargestIndex) return KVW("(number too large)");
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
  out << "Not everything could be copied:\n\n";
  std::vector<Row> rows = {{KVW("Reason"), KVW("Item")}};
  for (auto const& [item, reason] : result.failures) {
    rows.push_back({reason, unixNames ? item->getFullNameUnix() : item->getFullName()});
  }
  printTable(out, "ll", rows);
  if (result.unattempted > 0) {
    out << "\nThe disk is full. Not attempted: " << utf8(countOf(result.unattempted, KVW("file"))) << ".\n";
  }
}

}  // namespace

void printSurvey(std::ostream& out, Survey const& survey, Arguments const& arguments) {
  Directory const& folder = *survey.folder;
  String const none = KVW("none");
  SmartPtr<Directory const> const relative = folder.makeRelative(Directory::fromString(String::EMPTY));
  SmartPtr<Directory const> const parent = folder.getParent();
  String const root = folder.getRoot();
  printTable(out, "ll",
             {{KVW("Folder"), folder.getFullName()},
              {KVW("Unix name"), folder.getFullNameUnix()},
              {KVW("Long path"), folder.getFullNameUnicode()},
              {KVW("From here"), relative ? relative->getFullName() : none},
              {KVW("Parent"), parent ? parent->getFullName() : none},
              {KVW("Name"), folder.getName()},
              {KVW("Root"), root.length() > 0 ? root : none}});
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
  std::vector<Row> rows = {{KVW("Name now"), KVW("Name after"), KVW("Folder")}};
  for (auto const& [path, file] : files) {
    if (rows.size() > shown) break;
    rows.push_back({shorten(file->getName(), kRenumberedWidth), shorten(renumberedName(*file), kRenumberedWidth),
                    pathText(*file->getDirectory(), kFolderWidth, arguments.unixNames)});
  }
  if (shown > 0) {
    out << "Nothing is renamed. This is what the names would be with their numbers one higher:\n\n";
    printTable(out, "lll", rows);
    if (shown < files.size()) out << "  (" << utf8(countText(files.size() - shown)) << " more)\n";
    out << '\n';
  }
  printSummary(out, survey, arguments.pattern);
}

void printCopy(std::ostream& out, CopyResult const& result, Totals const& all, Directory const& target,
               std::chrono::nanoseconds duration, bool unixNames) {
  Totals const& copied = result.copied;
  String const of = KVW(" of ");
  printTable(out, "ll",
             {{KVW("Copied to"), unixNames ? target.getFullNameUnix() : target.getFullName()},
              {KVW("Files"), countText(copied.files) + of + countText(all.files)},
              {KVW("Folders"), countText(copied.folders) + of + countText(all.folders)},
              {KVW("Bytes"), sizeText(copied.bytes) + of + sizeText(all.bytes)},
              {KVW("Sizes equal"), countText(result.equalSizes) + of + countText(copied.files)},
              {KVW("Time"), paceText(copied.bytes, duration)}});
  out << '\n';
  if (!result.failures.empty()) {
    printFailures(out, result, unixNames);
  } else {
    out << (all.files > 0 ? "Everything was copied, and all sizes are equal.\n" : "There was no file to copy.\n");
  }
}

}  // namespace scanshelf
