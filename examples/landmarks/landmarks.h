// SPDX-License-Identifier: MIT
//
// Targets that a scanner recognises: a module of the family.
#pragma once

#include <kvbase/kvbase.h>

#if defined(LANDMARKS_BUILD)
#define LANDMARKS_API KVBASE_EXPORTED
#else
#define LANDMARKS_API KVBASE_IMPORTED
#endif

namespace landmarks {

using namespace KV_1_1;

// Something that stands still while the scanner moves. There are as many kinds as there are classes below this one.
class LANDMARKS_API Landmark : public BaseNode {
 public:
  // In the language of the user.
  virtual String description() const = 0;
  // The size in millimetres, with its unit.
  String size() const;

  KVBASE_DECLARE_CLASS(Landmark, LANDMARKS_API);

 protected:
  explicit Landmark(int millimetres) : millimetres_(millimetres) {}
  ~Landmark() override = default;

 private:
  int millimetres_;
};

class LANDMARKS_API Sphere : public Landmark {
 public:
  Sphere() : Landmark(145) {}
  String description() const override;

  KVBASE_DECLARE_CLASS(Sphere, LANDMARKS_API);

 protected:
  ~Sphere() override = default;
};

class LANDMARKS_API Checkerboard : public Landmark {
 public:
  Checkerboard() : Landmark(200) {}
  String description() const override;

  KVBASE_DECLARE_CLASS(Checkerboard, LANDMARKS_API);

 protected:
  ~Checkerboard() override = default;
};

}  // namespace landmarks
