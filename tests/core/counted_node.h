// SPDX-License-Identifier: MIT
//
// Counted objects for tests, which log each ref, unref and destruction.
#pragma once

#include <string>
#include <vector>

#include "kvbase/core/base_node.h"
#include "kvbase/core/smart_ptr.h"

namespace KV_1_1 {
namespace testing {

using Log = std::vector<std::string>;

// Writes "ref a", "unref a", "destroy a" into the log for the object named a. SmartPtr<LoggedNode>
// calls these members, which hide those of BaseNode.
class LoggedNode : public BaseNode {
 public:
  LoggedNode(Log& log, char const* name) : log_(log), name_(name) {}

  void ref() const {
    log_.push_back("ref " + name_);
    BaseNode::ref();
  }
  void unref() const {
    log_.push_back("unref " + name_);
    BaseNode::unref();
  }

  // An object may own another one, or itself.
  SmartPtr<LoggedNode> next;

 protected:
  ~LoggedNode() override { log_.push_back("destroy " + name_); }

 private:
  Log& log_;
  std::string const name_;
};

class DerivedLoggedNode : public LoggedNode {
 public:
  using LoggedNode::LoggedNode;
};

// Counts how many of its kind are alive. Its destructor is public, so that a test can end one that nobody ever owned.
class LiveNode : public BaseNode {
 public:
  explicit LiveNode(int& alive) : alive_(alive) { ++alive_; }
  LiveNode(LiveNode const& other) : BaseNode(other), alive_(other.alive_) { ++alive_; }
  LiveNode& operator=(LiveNode const& other) {
    BaseNode::operator=(other);
    return *this;
  }
  ~LiveNode() override { --alive_; }

 private:
  int& alive_;
};

}  // namespace testing
}  // namespace KV_1_1
