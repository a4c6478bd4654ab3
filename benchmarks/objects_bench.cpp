// SPDX-License-Identifier: MIT
//
// Reference counting, and tests for the class of an object.
#include <atomic>
#include <memory>
#include <utility>
#include <vector>

#include "benchmarks/support.h"
#include "kvbase/modules/client_module.h"

namespace KV_1_1 {
namespace bench {

namespace {

constexpr int kMany = 1000;

// The same small object with a virtual destructor, once for each kind of pointer.
class Node : public BaseNode {
 public:
  int value = 7;
};
// The count is in a base of the pointer's library, which in Boost knows the class of the object.
template <template <class, class> class Base, class Policy>
struct CountedAsKnown : Base<CountedAsKnown<Base, Policy>, Policy> {
  virtual ~CountedAsKnown() = default;
  int value = 7;
};
template <class Base>
struct Counted : Base {
  virtual ~Counted() = default;
  int value = 7;
};
struct Uncounted {
  virtual ~Uncounted() = default;
  int value = 7;
};

// What the count of a BaseNode requires and nothing else: it is read and written by locked instructions, and becomes a mark
// before the object ends.
struct BareNode {
  virtual ~BareNode() = default;
  std::atomic<unsigned int> owners{0};
  int value = 7;
};
class BarePointer {
 public:
  explicit BarePointer(BareNode* node) : node_(node) { ++node_->owners; }
  BarePointer(BarePointer const& other) : BarePointer(other.node_) {}
  BarePointer(BarePointer&& other) noexcept : node_(std::exchange(other.node_, nullptr)) {}
  BarePointer& operator=(BarePointer const&) = delete;
  ~BarePointer() {
    if (node_ == nullptr || node_->owners-- != 1) return;
    node_->owners.exchange(0xF000DEAD);
    delete node_;
  }

  BareNode* operator->() const { return node_; }

 private:
  BareNode* node_;
};

// Adds one contestant for each kind of pointer. makeWork takes a function that returns a pointer to a new object, and
// returns the work.
template <class MakeWork>
void addPointers(char const* name, MakeWork makeWork) {
  Row(name)
      .add("KVBase", makeWork([] { return SmartPtr<Node>(new Node); }))
      .add(PEER("intrusive_ptr", makeWork([] {
                  using Object = CountedAsKnown<boost::intrusive_ref_counter, boost::thread_safe_counter>;
                  return boost::intrusive_ptr<Object>(new Object);
                })))
      .add(PEER("QExplicitly...", makeWork([] {
                  using Object = Counted<QSharedData>;
                  return QExplicitlySharedDataPointer<Object>(new Object);
                })))
      .add(PEER("QSharedPointer", makeWork([] { return QSharedPointer<Uncounted>::create(); })))
      .add("shared_ptr", makeWork([] { return std::make_shared<Uncounted>(); }))
      .add("floor", makeWork([] { return BarePointer(new BareNode); }));
}

template <class Pointer>
struct Held {
  Pointer pointer;
};
template <class Pointer>
u16string plain(Held<Pointer> const& held) {
  return bench::plain(held.pointer->value);
}

template <class Pointer>
u16string plain(std::vector<Pointer> const& pointers) {
  int sum = 0;
  for (Pointer const& pointer : pointers) sum += pointer->value;
  return bench::plain(sum);
}

void addOwnership() {
  addPointers("objects: copy + drop a pointer", [](auto create) {
    using Pointer = decltype(create());
    return [pointer = create()] { return Held<Pointer>{pointer}; };
  });
  addPointers("objects: new + own + drop", [](auto create) {
    using Pointer = decltype(create());
    return [create] { return Held<Pointer>{create()}; };
  });
  addPointers("objects: vector of 1000, copy + drop", [](auto create) {
    std::vector<decltype(create())> pointers;
    for (int i = 0; i < kMany; ++i) pointers.push_back(create());
    return [pointers] { return pointers; };
  });
  // All pointers share one object that exists already; the vector starts empty and grows.
  addPointers("objects: push_back 1000, drop", [](auto create) {
    using Pointer = decltype(create());
    return [pointer = create()] {
      std::vector<Pointer> pointers;
      for (int i = 0; i < kMany; ++i) pointers.push_back(pointer);
      return pointers;
    };
  });
}

Module const& ownModule() {
  static ModuleOwner owner;
  return owner.module();
}

// A chain of classes: Level<4> is four levels below Level<0>.
template <int depth>
class Level : public Level<depth - 1> {
 public:
  mZClass const* getClassType() const override { return Class(); }
  static mZClass const* Class() {
    static mZClass const record(KVW("Level"), Level<depth - 1>::Class(), ownModule(), ClassVersion());
    return &record;
  }
};
template <>
class Level<0> : public BaseNode {
 public:
  mZClass const* getClassType() const override { return Class(); }
  static mZClass const* Class() {
    static mZClass const record(KVW("Level0"), BaseNode::Class(), ownModule(), ClassVersion());
    return &record;
  }
};
// A class outside the chain from Level<4> to Level<0>.
class Stranger : public Level<1> {
 public:
  mZClass const* getClassType() const override { return Class(); }
  static mZClass const* Class() {
    static mZClass const record(KVW("Stranger"), Level<1>::Class(), ownModule(), ClassVersion());
    return &record;
  }
};

// Qt's chain has five classes: QTemporaryFile - QFile - QFileDevice - QIODevice - QObject. So has that of Level<4>
// without BaseNode. The search for an unrelated class goes through all of a chain and starts at Level<3> for that reason.
template <class Asked, class QtAsked, class Object = Level<4>>
void addKind(char const* name) {
  SmartPtr<BaseNode const> const object(new Object);
  Row(name)
      .add("KVBase", [object, asked = Asked::Class()] { return object->isKindOf(asked); })
      .add("dynamic_cast", [object] { return dynamic_cast<Asked const*>(object.get()) != nullptr; })
      .add(
          PEER("QMetaObject", [qtObject = std::shared_ptr<QObject const>(new QTemporaryFile),
                               asked = &QtAsked::staticMetaObject] { return qtObject->metaObject()->inherits(asked); }))
      .add(PEER("QObject::inherits",
                [qtObject = std::shared_ptr<QObject const>(new QTemporaryFile), asked = &QtAsked::staticMetaObject] {
                  return qtObject->inherits(asked->className());
                }));
}

}  // namespace

void addObjects() {
  addOwnership();
  addKind<Level<4>, QTemporaryFile>("objects: isKindOf, own class");
  addKind<Level<3>, QFile>("objects: isKindOf, 1 up");
  addKind<Level<0>, QObject>("objects: isKindOf, 4 up");
  addKind<Stranger, QTimer, Level<3>>("objects: isKindOf, unrelated");
}

}  // namespace bench
}  // namespace KV_1_1
