// SPDX-License-Identifier: MIT
//
// The texts of paths, and the names in them.
#include <algorithm>
#include <typeinfo>
#include <utility>

#include "kvbase/filesystem/directory.h"
#include "kvbase/filesystem/file.h"
#include "kvbase/filesystem/internal/path_names.h"
#include "kvbase/filesystem/internal/system_name.h"
#include "kvbase/kernels/text_kernels.h"
#include "kvbase/strings/internal/text_builder.h"

namespace KV_1_1 {

TextView Directory::front() const {
  return viewOf(path_).substr(0, static_cast<std::size_t>(rootUnits_) + (absolute_ ? 1 : 0));
}

TextView Directory::levels() const {
  return viewOf(path_).substr(front().size());
}

template <class Start>
auto Directory::build(Form form, String const& baseName, String const& extension, Start start) const {
  TextView path = viewOf(path_);
  if (path.empty()) path = KVW(".\\");
  bool const isLong = form == Form::kLong && absolute_;
  // COMPAT: the name of a file in a root is not checked, and one that begins with a backslash makes the path a share.
  wchar const* const second = path.size() > 1 ? &path[1] : static_cast<wchar const*>(baseName);
  bool const isShare = isLong && path[0] == KVW('\\') && *second == KVW('\\');
  // The prefix of a share replaces the first of its two separators.
  TextView const prefix = !isLong ? TextView() : isShare ? KVW("\\\\?\\UNC") : KVW("\\\\?\\");
  if (isShare) path.remove_prefix(1);

  bool const hasExtension = extension.length() > 0;
  auto builder = start(static_cast<long long>(prefix.size() + path.size()) + baseName.length() +
                       (hasExtension ? extension.length() + 1ll : 0));
  builder.append(prefix);
  wchar* const place = builder.extend(0);
  builder.append(path);
  if (form == Form::kUnix) strings::kernels().replaceUnit(place, lengthOf(path), KVW('\\'), KVW('/'));
  builder.append(viewOf(baseName));
  if (hasExtension) builder.append(KVW('.')).append(viewOf(extension));
  return builder.finish();
}

String Directory::text(Form form, String const& baseName, String const& extension) const {
  return build(form, baseName, extension, [](long long units) { return TextBuilder(units); });
}

String const Directory::getFullName() const {
  return text(Form::kPlain, String::NIL, String::NIL);
}

String Directory::getFullNameUnicode() const {
  return text(Form::kLong, String::NIL, String::NIL);
}

String const Directory::getFullNameUnix() const {
  return text(Form::kUnix, String::NIL, String::NIL);
}

String const Directory::getName() const {
  TextView const all = levels();
  TextView const name = all.empty() ? KVW(".") : lastLevelOf(all);
  return String(name.data(), lengthOf(name));
}

void Directory::setName(String const& name) {
  TextView const all = levels();
  if (all.empty() || !isValidItemName(name)) return;
  TextView const path = viewOf(path_);
  path_ = withLevel(path.substr(0, path.size() - lastLevelOf(all).size() - 1), viewOf(name));
}

// Builds a text in the name, or in a block of the name if it is too long for that.
class SystemName::Builder {
 public:
  Builder(SystemName& name, long long units) : next_(name.units_) {
    if (units > kOrdinary) {
      TextBuilder block(units);
      next_ = block.extend(static_cast<int>(units));
      name.block_ = block.finish();
    }
    name.text_ = next_;
  }

  Builder& append(TextView text) {
    next_ = std::copy(text.begin(), text.end(), next_);
    return *this;
  }
  Builder& append(wchar unit) {
    *next_++ = unit;
    return *this;
  }
  wchar* extend(int units) {
    next_ += units;
    return next_ - units;
  }
  bool finish() {
    *next_ = 0;
    return true;
  }

 private:
  wchar* next_;
};

SystemName::SystemName(Directory const& directory) {
  if (typeid(directory) == typeid(Directory)) {
    build(directory, String::NIL, String::NIL);
  } else {
    block_ = directory.getFullNameUnicode();
    text_ = block_;
  }
}

SystemName::SystemName(File const& file) {
  if (typeid(file) == typeid(File)) {
    build(*file.directory_, file.baseName_, file.extension_);
  } else {
    block_ = file.getFullNameUnicode();
    text_ = block_;
  }
}

void SystemName::build(Directory const& directory, String const& baseName, String const& extension) {
  directory.build(Directory::Form::kLong, baseName, extension,
                  [this](long long units) { return Builder(*this, units); });
}

String const File::getFullName() const {
  return directory_->text(Directory::Form::kPlain, baseName_, extension_);
}

String File::getFullNameUnicode() const {
  return directory_->text(Directory::Form::kLong, baseName_, extension_);
}

String const File::getFullNameUnix() const {
  return directory_->text(Directory::Form::kUnix, baseName_, extension_);
}

String const File::getName() const {
  int const extensionUnits = extension_.length();
  if (extensionUnits == 0) return baseName_;
  TextBuilder builder(baseName_.length() + 1ll + extensionUnits);
  return builder.append(viewOf(baseName_)).append(KVW('.')).append(viewOf(extension_)).finish();
}

void File::setName(String const& name) {
  int const dot = name.findLastOf(KVW('.'), 0);
  // Without a dot the text is shared; NIL stays NIL.
  String baseName = dot < 0 ? name : name.substr(0, dot);
  String extension = dot < 0 ? String::EMPTY : name.substr(dot + 1);
  baseName_ = std::move(baseName);
  extension_ = std::move(extension);
}

}  // namespace KV_1_1
