// SPDX-License-Identifier: MIT
//
// The application archives projects of many formats: it copies the folder of a project, and the largest scan of it once
// more, after a check of its points.
#include "deep_stack.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/scratch_folder.h"
#include "benchmarks/support.h"
#include "kvbase/filesystem/directory.h"
#include "kvbase/filesystem/file.h"
#include "kvbase/filesystem/progress.h"

namespace KV_1_1 {
namespace bench {

namespace {

using Work = std::function<void()>;

struct Point {
  double height;
  int quality;
};
using Points = std::vector<Point>;

// What is done at the place: the first comparison of a check does the work. The comparing function of the C library has no
// argument for the data of its caller.
Work const* whileComparing = nullptr;

template <int Format>
int compareHeights(void const* one, void const* other) {
  if (whileComparing != nullptr) {
    (*std::exchange(whileComparing, nullptr))();
    keepWrites();
  }
  double const difference = static_cast<Point const*>(one)->height - static_cast<Point const*>(other)->height;
  return difference < 0 ? -1 : difference > Format * 1e-9 ? 1 : 0;
}

class Check {
 public:
  virtual ~Check() = default;
  virtual double medianHeight(Points points) const = 0;
};

template <int Format>
class CheckOfFormat : public Check {
 public:
  double medianHeight(Points points) const override {
    std::qsort(points.data(), points.size(), sizeof(Point), &compareHeights<Format>);
    return points[points.size() / 2].height + Format;
  }
};

// Sorts groups of points by their medians.
template <int Format>
class CopyingOfScan : public IProgress {
 public:
  explicit CopyingOfScan(std::shared_ptr<Check const> check) : check_(std::move(check)) {}

  void setProgress(double fraction) override {
    if (fraction < 1) return;
    std::map<int, Points> byQuality;
    for (int i = 0; i < 60; ++i) byQuality[i % 20].push_back({(i * 37 % 50) / 10.0, i % 20});
    std::vector<Points> groups;
    std::for_each(byQuality.begin(), byQuality.end(), [&](auto const& each) { groups.push_back(each.second); });
    std::sort(groups.begin(), groups.end(), [this](Points const& one, Points const& other) {
      return check_->medianHeight(one) < check_->medianHeight(other);
    });
    require(groups.front().front().height < groups.back().front().height + 5, "the points have heights");
  }

 private:
  std::shared_ptr<Check const> check_;
};

template <int Format>
class CopyingOfProject final : public KVFileProgressInterface {
 public:
  CopyingOfProject(SmartPtr<File const> const& scan, SmartPtr<File const> const& copy) : scan_(scan), copy_(copy) {}

  void fileCopied() override {
    auto const progress = std::make_shared<CopyingOfScan<Format>>(std::make_shared<CheckOfFormat<Format>>());
    require(scan_->copy(copy_, true, progress) == File::CopyOk, "a scan can be copied");
  }

 private:
  SmartPtr<File const> scan_;
  SmartPtr<File const> copy_;
};

struct Project {
  std::string from;
  std::string to;
};

class Task {
 public:
  virtual ~Task() = default;
  virtual void perform(Project const& project) = 0;
};

template <int Format>
class ArchiveTask : public Task {
 public:
  void perform(Project const& project) override {
    SmartPtr<Directory const> const source = Directory::fromUTF8(project.from);
    SmartPtr<Directory const> const target = Directory::fromUTF8(project.to);
    CopyingOfProject<Format> progress(File::fromString(*source->appendLevel(KVW("scans")), KVW("scan")),
                                      File::fromString(*target, KVW("largest")));
    require(source->copyContents(target, true, true, &progress), "a project can be copied");
  }
};

class Queue {
 public:
  explicit Queue(Work const& work) : work_(work) {}

  template <int... Formats>
  void fill(std::integer_sequence<int, Formats...>) {
    (tasks_.push_back(std::make_unique<ArchiveTask<Formats>>()), ...);
  }
  void run(std::function<void(Task&)> const& perform) {
    for (auto const& task : tasks_) {
      whileComparing = &work_;
      perform(*task);
      require(whileComparing == nullptr, "each task comes to its place");
    }
  }

 private:
  Work const& work_;
  std::vector<std::unique_ptr<Task>> tasks_;
};

}  // namespace

void callInApplication(Work const& work) {
  ScratchFolder const from;
  ScratchFolder const to;
  std::filesystem::create_directory(from.path("scans"));
  std::ofstream(from.path("scans/scan")) << "points";
  Queue queue(work);
  queue.fill(std::make_integer_sequence<int, kPlacesInApplication>());
  queue.run([&](Task& task) { task.perform({from.path(), to.path()}); });
}

}  // namespace bench
}  // namespace KV_1_1
