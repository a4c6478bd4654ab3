// SPDX-License-Identifier: MIT
//
// The texts of paths, and the names in them.
#include <utility>

#include "kvbase/filesystem/directory.h"
#include "kvbase/filesystem/file.h"
#include "kvbase/filesystem/internal/path_names.h"
#include "kvbase/strings/internal/text_builder.h"

namespace KV_1_1 {

String Directory::text(Form form, String const& baseName, String const& extension) const {
  wchar const separator = form == Form::kUnix ? KVW('/') : KVW('\\');
  bool const isLong = form == Form::kLong && absolute_;
  // COMPAT: the name of a file in a root is not checked, and one that begins with a backslash makes the path a share.
  wchar const* const second = root_.length() > 0 ? root_ : levels_.empty() ? baseName : nullptr;
  bool const isShare = isLong && second != nullptr && *second == KVW('\\');

  // The prefix of a share replaces the first of its two separators.
  TextView const prefix = !isLong ? TextView() : isShare ? KVW("\\\\?\\UNC") : KVW("\\\\?\\");
  TextView root = viewOf(root_);
  bool separatorBehindRoot = absolute_;
  if (isShare && root.empty()) separatorBehindRoot = false;
  if (isShare && !root.empty()) root.remove_prefix(1);

  bool const isHere = root.empty() && !absolute_ && levels_.empty();
  long long units = static_cast<long long>(prefix.size() + root.size()) + (separatorBehindRoot ? 1 : 0);
  for (String const& level : levels_) units += level.length() + 1ll;
  if (isHere) units = 2;
  units += baseName.length();
  bool const hasExtension = extension.length() > 0;
  if (hasExtension) units += extension.length() + 1ll;

  TextBuilder builder(units);
  builder.append(prefix);
  for (wchar const unit : root) builder.append(unit == KVW('\\') ? separator : unit);
  if (separatorBehindRoot) builder.append(separator);
  for (String const& level : levels_) builder.append(viewOf(level)).append(separator);
  if (isHere) builder.append(KVW('.')).append(separator);
  builder.append(viewOf(baseName));
  if (hasExtension) builder.append(KVW('.')).append(viewOf(extension));
  return builder.finish();
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
  return levels_.empty() ? String(KVW(".")) : levels_.back();
}

void Directory::setName(String const& name) {
  if (isValidItemName(name) && !levels_.empty()) levels_.back() = name;
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
  splitName(name, 0);
}

void File::splitName(String const& text, int from) {
  int const dot = text.findLastOf(KVW('.'), from);
  // Without a dot the text is shared; NIL stays NIL.
  String baseName = dot < 0 && from == 0 ? text : text.substr(from, dot);
  String extension = dot < 0 ? String::EMPTY : text.substr(dot + 1);
  baseName_ = std::move(baseName);
  extension_ = std::move(extension);
}

}  // namespace KV_1_1
