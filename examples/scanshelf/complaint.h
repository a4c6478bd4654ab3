// SPDX-License-Identifier: MIT
#pragma once

#include <kvbase/kvbase.h>

#include <stdexcept>

namespace scanshelf {

enum class Status { Done = 0, Failed = 1, Misused = 2 };

// Why the program stops: a sentence for the user, and the exit status that goes with it.
class Complaint : public std::runtime_error {
 public:
  // REQUIRES: the sentence is not NIL.
  explicit Complaint(KV_1_1::String const& sentence, Status status = Status::Failed)
      : std::runtime_error(sentence.stringUTF8()), status_(status) {}

  Status status() const { return status_; }

 private:
  Status status_;
};

}  // namespace scanshelf
