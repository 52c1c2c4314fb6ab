// Destination.cpp - see Destination.h.
#include "engine/sfx/Destination.h"

#include "engine/sfx/Console.h"

namespace kozor::sfx {

Destination::~Destination() {
  CloseDirectory();
  if (root >= 0) host::Close(root);
}

void Destination::CloseDirectory() {
  if (directory >= 0) host::Close(directory);
  directory = host::kNotOpen;
}

long Destination::Open(std::string_view path) {
  root = host::OpenDirectory(path);
  return root < 0 ? static_cast<long>(root) : 0;
}

long Destination::Find(std::string_view name, Place& place) {
  const std::size_t separator = name.rfind('/');
  const std::size_t parentBytes = separator == std::string_view::npos ? 0 : separator + 1;
  std::string_view parent = name.substr(0, parentBytes);
  place.name = name.substr(parentBytes);
  if (parent.empty()) {
    place.directory = root;
    return 0;
  }
  if (directory < 0 || directoryName != parent) {
    CloseDirectory();
    directoryName = parent;
    host::Handle above = root;
    while (!parent.empty()) {
      const std::string component(parent.substr(0, parent.find('/')));
      parent.remove_prefix(component.size() + 1);
      const host::Handle opened = host::OpenFolder(above, component);
      if (above != root) host::Close(above);
      if (opened < 0) return static_cast<long>(opened);
      above = opened;
    }
    directory = above;
  }
  place.directory = directory;
  return 0;
}

long MakeDirectory(const Place& place) {
  const host::Handle made = host::OpenFolder(place.directory, place.name);
  if (made < 0) return static_cast<long>(made);
  host::Close(made);
  return 0;
}

NewFile::~NewFile() {
  UnmapContents();
  if (!temporaryName.empty()) host::Remove(place.directory, file, temporaryName);
  if (file >= 0) host::Close(file);
}

void NewFile::UnmapContents() {
  if (!contents.empty()) host::Unmap(contents);
  contents = {};
}

long NewFile::Create(const Place& wanted, std::uint64_t bytes, Access wantedAccess) {
  place = wanted;
  access = wantedAccess;
  for (std::uint64_t number = 0; file < 0; ++number) {
    temporaryName = Join({".kozor-", Decimal(host::ProcessId()), "-", Decimal(number), ".tmp"});
    file = host::MakeFile(place.directory, temporaryName, access);
    if (file < 0 && file != host::kNameTaken) {
      temporaryName.clear();
      return static_cast<long>(file);
    }
  }
  return bytes == 0 ? 0 : host::ReserveAndMap(file, bytes, contents);
}

long NewFile::Publish(std::uint64_t fileTime, Existing existing) {
  UnmapContents();  // first: stores through the mapping would change the time again
  const long finished = host::FinishFile(file, fileTime, access);
  if (finished < 0) return finished;
  const long renamed = host::Rename(place.directory, file, temporaryName, place.name, existing);
  if (renamed == 0) temporaryName.clear();
  return renamed;
}

}  // namespace kozor::sfx
