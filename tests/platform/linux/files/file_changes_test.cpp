// SPDX-License-Identifier: MIT
//
// Changes on the disk: the code of each failure, and what stays unchanged.
#include <errno.h>
#include <sys/resource.h>

#include <functional>
#include <utility>
#include <vector>

#include "tests/platform/linux/environment_variable.h"
#include "tests/platform/linux/files/file_support.h"
#include "tests/platform/linux/refused_call.h"

namespace KV_1_1 {
namespace testing {
namespace {

namespace fs = std::filesystem;
using namespace KV_1_1::platform;

class LinuxFileChanges : public FileCalls {
 protected:
  // Every call that takes a path, by name.
  std::vector<std::pair<char const*, std::function<ulong32(wstring const&)>>> calls() const {
    return {
        {"attributes", [this](wstring const& path) { return errorOfAttributes(path); }},
        {"info",
         [this](wstring const& path) {
           FileInfo info;
           return errorOf([&] { return files().getInfo(at(path).c_str(), info); });
         }},
        {"set attributes", [this](wstring const& path) { return setAttributes(path, kAttributeReadOnly); }},
        {"open", [this](wstring const& path) { return open(path, kAccessRead); }},
        {"open to write", [this](wstring const& path) { return open(path, kAccessWrite); }},
        {"open or make", [this](wstring const& path) { return open(path, kAccessWrite, kOpenAlways); }},
        {"copy from", [this](wstring const& path) { return copy(path, KVW("new")); }},
        {"copy to", [this](wstring const& path) { return copy(KVW("file"), path); }},
        {"move from", [this](wstring const& path) { return move(path, KVW("new")); }},
        {"move to", [this](wstring const& path) { return move(KVW("file"), path); }},
        {"delete", [this](wstring const& path) { return remove(path); }},
        {"make directory", [this](wstring const& path) { return makeDirectory(path); }},
        {"remove directory", [this](wstring const& path) { return removeDirectory(path); }},
    };
  }
};

TEST_F(LinuxFileChanges, APathThatLeadsNowhereGivesItsCode) {
  folder.write("file", "kept");
  link("circle2", "circle1");
  link("circle1", "circle2");
  link("nothing", "toNothing");
  folder.makeFolder("drives/unc/server");
  link("/nothing/there", "drives/d:");
  EnvironmentVariable const drives("KVBASE_DRIVES", folder.path("drives").c_str());
  wstring deep;
  while (deep.size() < 5000) deep += wstring(200, KVW('d')) + KVW("\\");
  struct Row {
    char const* name;
    wstring path;
    ulong32 code;
  };
  Row const rows[] = {
      {"missing folder", KVW("none\\x"), kPathNotFound},
      {"missing folders", KVW("none\\none\\x"), kPathNotFound},
      {"below a file", KVW("file\\x"), kPathNotFound},
      {"below a link to nothing", KVW("toNothing\\x"), kPathNotFound},
      {"missing drive", KVW("Q:\\x"), kPathNotFound},
      {"drive that leads nowhere", KVW("D:\\x"), kPathNotFound},
      {"missing server", KVW("\\\\none\\share\\x"), kBadNetworkPath},
      {"missing share", KVW("\\\\server\\none\\x"), kBadNetworkPath},
      {"missing share, long form", KVW("\\\\?\\UNC\\server\\none\\x"), kBadNetworkPath},
      {"wildcard", KVW("a*"), kInvalidName},
      {"bracket", KVW("a<b"), kInvalidName},
      {"bar", KVW("a|b"), kInvalidName},
      {"colon", KVW("ab:c"), kInvalidName},
      {"long name", wstring(256, KVW('n')), kNameTooLong},
      {"long path", deep + KVW("x"), kNameTooLong},
      {"circle of links", KVW("circle1\\x"), kCannotResolveName},
  };
  for (Row const& row : rows) {
    for (auto const& call : calls()) {
      SCOPED_TRACE(row.name);
      SCOPED_TRACE(call.first);
      EXPECT_EQ(call.second(row.path), row.code);
      EXPECT_FALSE(has("new"));
      ASSERT_EQ(bytes("file"), "kept");
    }
  }
}

TEST_F(LinuxFileChanges, WithoutDrivesFolderThereIsNoDriveAndNoShare) {
  folder.write("file", "kept");
  EnvironmentVariable const drives("KVBASE_DRIVES", folder.path("none").c_str());
  for (auto const& call : calls()) {
    SCOPED_TRACE(call.first);
    EXPECT_EQ(call.second(KVW("C:\\x")), kPathNotFound);
    EXPECT_EQ(call.second(KVW("\\\\server\\share\\x")), kBadNetworkPath);
  }
}

TEST_F(LinuxFileChanges, DirectoriesAreMadeWhereNothingHasTheirName) {
  folder.write("file");
  folder.makeFolder("dir");
  link("dir", "toDir");
  link("nothing", "toNothing");
  EXPECT_EQ(makeDirectory(KVW("new")), kNoError);
  EXPECT_EQ(makeDirectory(KVW("separator\\")), kNoError);
  EXPECT_EQ(makeDirectory(KVW("toDir\\below")), kNoError);
  EXPECT_TRUE(fs::is_directory(folder.path("new")) && fs::is_directory(folder.path("separator")));
  EXPECT_TRUE(fs::is_directory(folder.path("dir/below")));
  for (wchar const* name : {KVW("new"), KVW("new\\"), KVW("file"), KVW("toDir"), KVW("toDir\\"), KVW("toNothing")}) {
    EXPECT_EQ(makeDirectory(name), kAlreadyExists) << narrow(name);
  }
  EXPECT_FALSE(has("nothing"));
}

// It may be a link, and the link is what makes the drive.
TEST_F(LinuxFileChanges, TheRootOfADriveOrShareIsNotRemoved) {
  folder.makeFolder("disk/sub");
  folder.makeFolder("drives/d:");
  folder.makeFolder("drives/no:drive");
  folder.makeFolder("drives/unc/server");
  link("../disk", "drives/c:");
  link("../../../disk", "drives/unc/server/share");
  EnvironmentVariable const drives("KVBASE_DRIVES", folder.path("drives").c_str());
  for (wchar const* root : {KVW("C:\\"), KVW("C:"), KVW("\\\\?\\C:\\"), KVW("D:\\"), KVW("\\\\server\\share"),
                            KVW("\\\\?\\UNC\\server\\share\\")}) {
    EXPECT_EQ(removeDirectory(root), kAccessDenied) << narrow(root);
    EXPECT_EQ(errorOfAttributes(root), kNoError) << narrow(root);
  }
  EXPECT_EQ(removeDirectory(KVW("Q:\\")), kPathNotFound);
  EXPECT_EQ(removeDirectory(KVW("\\\\server\\none")), kBadNetworkPath);
  EXPECT_EQ(removeDirectory(KVW("C:\\sub\\")), kNoError);
  EXPECT_FALSE(has("disk/sub"));
  EXPECT_EQ(removeDirectory(KVW("drives\\no\uF03Adrive")), kNoError);
}

// Items of other kinds are deleted and moved like files.
TEST_F(LinuxFileChanges, OtherItemsAreDeletedAndMoved) {
  ASSERT_EQ(mkfifo(folder.path("fifo").c_str(), 0644), 0);
  EXPECT_EQ(move(KVW("fifo"), KVW("moved")), kNoError);
  EXPECT_TRUE(S_ISFIFO(status("moved").st_mode));
  EXPECT_EQ(remove(KVW("moved")), kNoError);
  EXPECT_FALSE(has("moved"));
}

TEST_F(LinuxFileChanges, AMoveNeverReplacesAnotherItem) {
  folder.write("file", "file");
  folder.write("other", "other");
  folder.write("full/inside", "inside");
  folder.makeFolder("empty");
  ASSERT_EQ(::link(folder.path("file").c_str(), folder.path("twin").c_str()), 0);
  struct Row {
    char const* name;
    wchar const* source;
    wchar const* target;
  };
  Row const rows[] = {
      {"file onto file", KVW("file"), KVW("other")},
      {"file onto folder", KVW("file"), KVW("empty")},
      {"folder onto file", KVW("full"), KVW("file")},
      {"folder onto empty folder", KVW("full"), KVW("empty")},
      {"another name of the same file", KVW("file"), KVW("twin")},
  };
  for (Row const& row : rows) {
    EXPECT_EQ(move(row.source, row.target), kAlreadyExists) << row.name;
    EXPECT_EQ(bytes("file") + bytes("other") + bytes("full/inside") + bytes("twin"), "fileotherinsidefile") << row.name;
  }
  EXPECT_TRUE(fs::is_empty(folder.path("empty")));
  EXPECT_EQ(status("file").st_nlink, 2u);
}

TEST_F(LinuxFileChanges, AMoveNeverReplacesWhereTheFileSystemDoesNotSeeToIt) {
  folder.write("file", "file");
  folder.write("other", "other");
  folder.makeFolder("dir");
  bool const permitted = inChildIfPermitted([&] {
    if (!refuseCall(SYS_renameat2, EINVAL)) return false;  // as such a file system answers the call that never replaces
    EXPECT_EQ(move(KVW("file"), KVW("other")), kAlreadyExists);
    EXPECT_EQ(move(KVW("file"), KVW("dir")), kAlreadyExists);
    EXPECT_EQ(move(KVW("dir"), KVW("other")), kAlreadyExists);
    EXPECT_EQ(move(KVW("none"), KVW("new")), kFileNotFound);
    EXPECT_EQ(move(KVW("file"), KVW("none\\new")), kPathNotFound);
    EXPECT_EQ(move(KVW("dir"), KVW("none\\new")), kPathNotFound);
    EXPECT_EQ(move(KVW("file"), KVW("file")), kNoError);
    EXPECT_EQ(bytes("file") + bytes("other"), "fileother");
    EXPECT_EQ(move(KVW("file"), KVW("dir\\moved")), kNoError);
    EXPECT_EQ(move(KVW("dir"), KVW("renamed")), kNoError);
    return true;
  });
  KVBASE_SKIP_UNLESS(permitted, "a kernel that takes a filter of system calls");
  EXPECT_EQ(bytes("renamed/moved"), "file");
  EXPECT_FALSE(has("file") || has("dir"));
}

TEST_F(LinuxFileChanges, AMoveOntoItselfIsDone) {
  folder.write("dir/file", "kept");
  folder.makeFolder("dir/sub");
  link("dir", "toDir");
  EXPECT_EQ(move(KVW("dir\\file"), KVW("dir\\file")), kNoError);
  EXPECT_EQ(move(KVW("dir\\file"), KVW("none\\..\\dir\\.\\file")), kNoError);
  EXPECT_EQ(move(KVW("dir\\file"), KVW("toDir\\file")), kNoError) << "by another way";
  EXPECT_EQ(move(KVW("dir\\sub"), KVW("toDir\\sub")), kNoError) << "by another way";
  EXPECT_EQ(bytes("dir/file"), "kept");
  EXPECT_EQ(move(KVW("dir"), KVW("dir")), kNoError);
  EXPECT_EQ(move(KVW("toDir"), KVW("toDir")), kNoError);
  EXPECT_EQ(linkText("toDir"), "dir");
  EXPECT_EQ(move(KVW("dir\\file"), KVW("dir\\FILE")), kNoError) << "a change of case is a change";
  EXPECT_TRUE(has("dir/FILE"));
  EXPECT_FALSE(has("dir/file"));
}

TEST_F(LinuxFileChanges, MovesCarryEverything) {
  folder.write("locked", "kept");
  folder.write("dir/sub/file", "deep");
  ASSERT_EQ(chmod(folder.path("locked").c_str(), 0440), 0);
  struct stat const before = status("locked");
  EXPECT_EQ(move(KVW("locked"), KVW("dir\\moved")), kNoError);
  EXPECT_EQ(status("dir/moved").st_ino, before.st_ino);
  EXPECT_EQ(mode("dir/moved"), 0440u);
  EXPECT_EQ(move(KVW("dir"), KVW("renamed")), kNoError);
  EXPECT_EQ(bytes("renamed/sub/file") + bytes("renamed/moved"), "deepkept");
  EXPECT_FALSE(has("locked") || has("dir"));
  EXPECT_NE(move(KVW("renamed"), KVW("renamed\\sub\\below")), kNoError) << "not into itself";
  EXPECT_EQ(bytes("renamed/sub/file"), "deep");
}

TEST_F(LinuxFileChanges, ReadOnlyIsTheRightToWrite) {
  struct Row {
    unsigned before, locked, unlocked;
  };
  Row const rows[] = {{0644, 0444, 0644},    {0666, 0444, 0644}, {0600, 0400, 0600},
                      {0755, 0555, 0755},    {0444, 0444, 0644}, {0464, 0444, 0644},
                      {04755, 04555, 04755}, {0200, 0000, 0200}, {02775, 02555, 02755}};
  folder.write("file", "kept");
  for (Row const& row : rows) {
    SCOPED_TRACE(row.before);
    ASSERT_EQ(chmod(folder.path("file").c_str(), row.before), 0);
    EXPECT_EQ(setAttributes(KVW("file"), kAttributeReadOnly | kAttributeHidden), kNoError);
    EXPECT_EQ(mode("file"), row.locked);
    EXPECT_EQ(attributes(KVW("file")), kAttributeReadOnly);
    EXPECT_EQ(setAttributes(KVW("file"), kAttributeNormal), kNoError);
    EXPECT_EQ(mode("file"), row.unlocked);
    EXPECT_EQ(attributes(KVW("file")), kAttributeNormal);
  }
  for (unsigned const writable : {0664u, 0646u, 0200u}) {
    ASSERT_EQ(chmod(folder.path("file").c_str(), writable), 0);
    EXPECT_EQ(setAttributes(KVW("file"), 0), kNoError);
    EXPECT_EQ(mode("file"), writable) << "what is writable stays as it is";
  }
}

TEST_F(LinuxFileChanges, ReadOnlyConcernsFilesAlone) {
  folder.write("dir/file");
  link("dir", "toDir");
  link("nothing", "toNothing");
  link("dir/file", "toFile");
  ASSERT_EQ(chmod(folder.path("dir").c_str(), 0775), 0);
  for (wchar const* name : {KVW("dir"), KVW("dir\\"), KVW("toDir"), KVW("toDir\\"), KVW("toNothing")}) {
    EXPECT_EQ(setAttributes(name, kAttributeReadOnly), kNoError) << narrow(name);
    EXPECT_EQ(attributes(name) & kAttributeReadOnly, 0u) << narrow(name);
  }
  EXPECT_EQ(mode("dir"), 0775u);
  EXPECT_EQ(setAttributes(KVW("toFile"), kAttributeReadOnly), kNoError);
  EXPECT_EQ(mode("dir/file"), 0444u) << "a link to a file is the file";
  EXPECT_EQ(setAttributes(KVW("toFile"), kAttributeNormal), kNoError);
  EXPECT_EQ(mode("dir/file"), 0644u);
  EXPECT_FALSE(has("nothing"));
}

// The file of a running program cannot be written; it can once the program has ended.
TEST_F(LinuxFileChanges, AFileInUseIsASharingViolation) {
  fs::copy_file("/bin/cat", folder.path("program"));
  folder.write("file", "new");
  fs::path const program = folder.path("program");
  int input[2], started[2];
  ASSERT_EQ(pipe2(input, O_CLOEXEC), 0);
  ASSERT_EQ(pipe2(started, O_CLOEXEC), 0);
  pid_t const child = fork();
  if (child == 0) {
    dup2(input[0], STDIN_FILENO);
    execl(program.c_str(), "cat", static_cast<char*>(nullptr));
    _exit(1);
  }
  ASSERT_GT(child, 0);
  close(input[0]);
  close(started[1]);
  char unused;
  EXPECT_EQ(read(started[0], &unused, 1), 0) << "closed when the program has started";
  close(started[0]);
  int const writable = ::open(program.c_str(), O_WRONLY);
  bool const isProtected = writable < 0 && errno == ETXTBSY;
  if (writable >= 0) close(writable);
  if (isProtected) {
    EXPECT_EQ(open(KVW("program"), kAccessWrite), kSharingViolation);
    EXPECT_EQ(copy(KVW("file"), KVW("program")), kSharingViolation);
  }
  close(input[1]);
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(fs::file_size(program), fs::file_size("/bin/cat"));
  KVBASE_SKIP_UNLESS(isProtected, "a kernel that does not let programs be written while they run");
  EXPECT_EQ(copy(KVW("file"), KVW("program")), kNoError);
}

TEST_F(LinuxFileChanges, WithoutRightsAccessIsDenied) {
  folder.write("open/file", "kept");
  folder.makeFolder("open/dir");
  folder.write("closed/file");
  folder.write("secret");
  auto const setMode = [this](char const* name, mode_t mode) { return chmod(folder.path(name).c_str(), mode); };
  for (char const* const name : {"secret", "closed"}) ASSERT_EQ(setMode(name, 0), 0);
  ASSERT_EQ(setMode("open/file", 0444) + setMode("open", 0555), 0);
  inChild([&] {
    dropRights();
    EXPECT_EQ(errorOfAttributes(KVW("closed\\file")), kAccessDenied);
    EXPECT_EQ(setAttributes(KVW("closed\\file"), kAttributeReadOnly), kAccessDenied);
    EXPECT_EQ(open(KVW("secret"), kAccessRead), kAccessDenied);
    EXPECT_EQ(open(KVW("open\\file"), kAccessWrite), kAccessDenied);
    EXPECT_EQ(open(KVW("open\\new"), kAccessWrite, kOpenAlways), kAccessDenied);
    EXPECT_EQ(remove(KVW("open\\file")), kAccessDenied);
    EXPECT_EQ(move(KVW("open\\file"), KVW("open\\moved")), kAccessDenied);
    EXPECT_EQ(copy(KVW("open\\file"), KVW("open\\copy")), kAccessDenied);
    EXPECT_EQ(copy(KVW("secret"), KVW("open\\copy")), kAccessDenied);
    EXPECT_EQ(makeDirectory(KVW("open\\new")), kAccessDenied);
    EXPECT_EQ(removeDirectory(KVW("open\\dir")), kAccessDenied);
  });
  ASSERT_EQ(setMode("open", 0755) + setMode("closed", 0755), 0);
  EXPECT_EQ(bytes("open/file"), "kept");
}

// A file of /proc is root's.
TEST_F(LinuxFileChanges, TheAttributesOfAnothersFileAreNotChanged) {
  bool const permitted = inChildIfPermitted([&] {
    constexpr uid_t kNobody = 65534;
    if (geteuid() == 0 && seteuid(kNobody) != 0) return false;
    EXPECT_EQ(setAttributes(KVW("\\proc\\version"), kAttributeNormal), kAccessDenied);
    return true;
  });
  KVBASE_SKIP_UNLESS(permitted, "the right to change the user, which some containers withhold from root");
}

TEST_F(LinuxFileChanges, AFileSystemMayBeWriteProtected) {
  folder.makeFolder("mount");
  folder.write("file");
  bool const permitted = inChildIfPermitted([&] {
    if (!mountPrivately(folder.path("mount"), "size=1m")) return false;
    folder.write("mount/file", "kept");
    folder.makeFolder("mount/dir");
    if (mount("none", folder.path("mount").c_str(), nullptr, MS_REMOUNT | MS_RDONLY, "size=1m") != 0) return false;
    EXPECT_EQ(makeDirectory(KVW("mount\\new")), kWriteProtected);
    EXPECT_EQ(removeDirectory(KVW("mount\\dir")), kWriteProtected);
    EXPECT_EQ(remove(KVW("mount\\file")), kWriteProtected);
    EXPECT_EQ(move(KVW("mount\\file"), KVW("mount\\moved")), kWriteProtected);
    EXPECT_EQ(copy(KVW("file"), KVW("mount\\copy")), kWriteProtected);
    EXPECT_EQ(copy(KVW("file"), KVW("mount\\file")), kWriteProtected);
    EXPECT_EQ(open(KVW("mount\\file"), kAccessWrite), kWriteProtected);
    EXPECT_EQ(open(KVW("mount\\file"), kAccessRead), kNoError);
    EXPECT_EQ(setAttributes(KVW("mount\\file"), kAttributeReadOnly), kWriteProtected);
    EXPECT_EQ(bytes("mount/file"), "kept");
    return true;
  });
  KVBASE_SKIP_UNLESS(permitted, KVBASE_MOUNT_RIGHT);
}

TEST_F(LinuxFileChanges, TheNumberOfOpenFilesIsLimited) {
  folder.write("file", "1");
  inChild([&] {
    wstring const path = at(KVW("file")), target = at(KVW("copy"));
    FileApi& api = files();
    ErrorApi& errors = nativeErrors();
    // A sanitizer opens a descriptor when it sees a type for the first time.
    EXPECT_TRUE(api.copyFile(path.c_str(), at(KVW("first")).c_str(), nullptr, nullptr, 0));
    errors.setLastError(kNoError);
    rlimit previous;
    getrlimit(RLIMIT_NOFILE, &previous);
    rlimit const none = {0, previous.rlim_max};
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    FileHandle const file = api.openFile(path.c_str(), kAccessRead, 0, kOpenExisting, 0);
    ulong32 const errorOfOpening = errors.lastError();
    bool const isCopied = api.copyFile(path.c_str(), target.c_str(), nullptr, nullptr, 0);
    ulong32 const errorOfCopying = errors.lastError();
    setrlimit(RLIMIT_NOFILE, &previous);
    EXPECT_EQ(file, invalidFile());
    EXPECT_EQ(errorOfOpening, kTooManyOpenFiles);
    EXPECT_FALSE(isCopied);
    EXPECT_EQ(errorOfCopying, kTooManyOpenFiles);
    EXPECT_FALSE(has("copy"));
  });
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
