// SPDX-License-Identifier: MIT
//
// One object for each display that displays.py expects.
#include "kvbase/kvbase.h"
#include "kvbase/modules/client_module.h"

using namespace KV_1_1;

namespace {

template <class T>
void use(T const& object) {
  static_cast<void>(object);
}

}  // namespace

// The debugger stops here.
extern "C" void allObjectsStand() {}

int main() {
  String const nil;
  String const empty = String::EMPTY;
  String const plain(KVW("scan007"));
  String const escaped(KVW("say \"a\\b\"\n\t\u0001"));
  String const beyondAscii(KVW("\u00C4\u20AC\U0001F600"));
  wchar const surrogateUnits[] = {KVW('a'), 0xD83D, 0};
  String const surrogate(surrogateUnits);
  String const innerNul(KVW("a\0b"), 4);
  String unmeasured(KVW("left right"));
  unmeasured[4] = KVW('\0');
  String const longText = String(KVW("0123456789")) + KVW("0123456789");

  SmartPtr<Directory const> const noDirectory;
  SmartPtr<Directory const> const directory = Directory::fromString(KVW("C:\\scans\\today\\"));
  SmartPtr<Directory const> const again = directory;
  SmartPtr<Directory const> const share = Directory::fromString(KVW("\\\\server\\share\\a\\"));
  SmartPtr<Directory const> const current(new Directory);
  SmartPtr<File const> const file = File::fromString(*directory, KVW("a.txt"));
  SmartPtr<File const> const bareFile = File::fromString(KVW("noextension"));
  SmartPtr<FileSystemItem const> const item = file;
  SmartPtr<File> const unnamed = File::fromString(KVW("a.txt"));
  unnamed->setName(String::NIL);

  ModuleOwner owner;
  Module const& fresh = owner.module();
  Module const& library = *Module::begin();
  SymbolTable const noSymbols;
  SymbolTable const& symbols = library.getResourceSymbols();
  mZClass const& fileRecord = *File::Class();
  mZClass const& baseRecord = *BaseNode::Class();
  mZClass const& infoRecord = *InfoStringMap::Class();
  mZClass const versioned(KVW("Versioned"), File::Class(), fresh, ClassVersion{5});

  ObserverInfo const observerInfo;
  SmartPtr<InfoStringMap> const infos(new InfoStringMap);
  infos->addInfo<String>(KVW("Name"), KVW("scan007"));
  infos->addInfo<String>(String::NIL, String::EMPTY);
  infos->addInfo<String>(KVW("colour"), String::NIL);
  infos->setExpire(false);
  InfoStringMap const noInfos;
  InfoStringMap manyInfos;
  for (wchar unit = KVW('a'); unit <= KVW('i'); ++unit) manyInfos.addInfo<String>(String(&unit, 1), String(&unit, 1));

  Vec3d<float> const vector = {1.5f, -2.25f, 3};
  ScanPtColor<Vec3d<double>> point;
  point.position = {1, 2, 3.5};
  point.value = 40000;
  point.color = {1, 2, 255, 0};
  ScanPtColorExt<Vec3d<float>> extended;
  extended.extra = 7;
  ScanPtColor<int> const& number = ScanPtColor<int>::nullReference;

  allObjectsStand();
  use(nil), use(empty), use(plain), use(escaped), use(beyondAscii), use(surrogate), use(innerNul), use(unmeasured);
  use(longText), use(noDirectory), use(directory), use(again), use(share), use(file), use(bareFile);
  use(item), use(unnamed), use(library), use(noSymbols), use(symbols), use(fileRecord), use(baseRecord),
      use(infoRecord);
  use(versioned), use(observerInfo), use(infos), use(noInfos), use(manyInfos), use(current), use(vector), use(point),
      use(extended), use(number);
  return 0;
}
