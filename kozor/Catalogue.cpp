// Catalogue.cpp - see Catalogue.h.
#include "Catalogue.h"

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>

#include "Console.h"
#include "Failure.h"
#include "Host.h"
#include "HostFiles.h"
#include "platform/base/Clock.h"

namespace kozor::program {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

namespace {

constexpr int kFormat = 1;

// Replaces the file atomically, and only after the new contents are on the medium.
void WriteWhole(const fs::path& path, const std::string& text) try {
  const std::string name = Shown(path.filename());
  const std::string temporary = name + ".tmp";
  const Descriptor folder = OpenDirectory(path.has_parent_path() ? path.parent_path() : ".");
  if (!folder.IsOpen()) FailBySystem();
  RemoveFile(folder.Number(), temporary);
  try {
    Descriptor file = CreateNewFile(folder.Number(), temporary);
    WriteAll(file.Number(), std::as_bytes(std::span(text)));
    Flush(file.Number());
    if (!file.Finish()) FailBySystem();
    MoveTo(folder.Number(), temporary, folder.Number(), name, true);
  } catch (const FileFailure&) {
    RemoveFile(folder.Number(), temporary);
    throw;
  }
} catch (const FileFailure& failure) {
  throw Failure(Visible(Shown(path)) + ": can't write: " + failure.what());
}

std::string HostStyle(std::string name) {
  std::replace(name.begin(), name.end(), '\\', '/');
  return name;
}

std::string LibraryStyle(std::string name) {
  std::replace(name.begin(), name.end(), '/', '\\');
  return name;
}

// Seconds since 1970 that a file time can express: from 1601 to 30827.
std::int64_t InRange(std::int64_t seconds) {
  return std::clamp<std::int64_t>(seconds, -kSecondsFrom1601To1970, 910'670'515'199);
}

// An object of the fields.  A list in braces would copy each field twice more.
template <typename Value>
struct Field {
  const char* name;
  Value value;
};
template <typename Value>
Field(const char*, Value) -> Field<Value>;  // clang before 17 doesn't deduce it itself
template <typename... Values>
Json Object(Field<Values>... fields) {
  Json::object_t object;
  object.reserve(sizeof...(fields));
  (object.emplace_back(fields.name, std::move(fields.value)), ...);
  return object;
}

Json Put(const CatalogueVolume& volume) {
  return Object(Field{"number", volume.number}, Field{"file", volume.file},
                Field{"bytes", volume.bytes}, Field{"sha256", volume.sha256});
}

Json Put(const CatalogueFile& file) {
  return Object(Field{"name", HostStyle(file.name)}, Field{"bytes", file.bytes},
                Field{"modified", file.time}, Field{"mode", file.mode},
                Field{"attributes", file.attribute}, Field{"volume", file.volume},
                Field{"offset", file.offset}, Field{"sha256", file.sha256});
}

Json Put(const CatalogueFolder& folder) {
  return Object(Field{"name", HostStyle(folder.name)}, Field{"modified", InRange(folder.time)},
                Field{"mode", folder.mode});
}

Json Put(const CatalogueLink& link) {
  return Object(Field{"name", HostStyle(link.name)}, Field{"target", link.target},
                Field{"modified", InRange(link.time)});
}

// Throws std::out_of_range.
std::int64_t TimeIn(const Json& json) {
  const std::int64_t seconds = json.at("modified");
  if (seconds != InRange(seconds)) throw std::out_of_range("modified");
  return seconds;
}

void Get(const Json& json, CatalogueVolume& volume) {
  volume = {json.at("number"), json.at("file"), json.at("bytes"), json.at("sha256")};
}

void Get(const Json& json, CatalogueFile& file) {
  file = {LibraryStyle(json.at("name")), json.at("bytes"),  TimeIn(json),      json.at("mode"),
          json.at("attributes"),         json.at("volume"), json.at("offset"), json.at("sha256")};
}

void Get(const Json& json, CatalogueFolder& folder) {
  folder = {LibraryStyle(json.at("name")), TimeIn(json), json.at("mode")};
}

void Get(const Json& json, CatalogueLink& link) {
  link = {LibraryStyle(json.at("name")), json.at("target"), TimeIn(json)};
}

template <typename Entry>
Json PutAll(const std::vector<Entry>& entries) {
  Json::array_t all;
  all.reserve(entries.size());
  for (const Entry& entry : entries) all.push_back(Put(entry));
  return all;
}

template <typename Entry>
void GetAll(const Json& all, std::vector<Entry>& entries) {
  for (const Json& json : all) Get(json, entries.emplace_back());
}

}  // namespace

std::uint64_t Catalogue::TotalBytes() const {
  std::uint64_t bytes = 0;
  for (const CatalogueFile& file : files) bytes += file.bytes;
  return bytes;
}

std::string IdentityOf(const VolumeHeader& header) {
  Sha256 sum;
  for (const std::string* area : {&header.id, &header.label, &header.memo}) {
    const std::string text = std::to_string(area->size()) + ':' + *area;
    sum.Add({reinterpret_cast<const unsigned char*>(text.data()), text.size()});
  }
  return sum.Finish();
}

void SetScanner::Scan(const fs::path& path) {
  VolumeReader volume(path);
  Scan(path, volume);
}

void SetScanner::Scan(const fs::path& path, VolumeReader& volume) {
  const auto number = static_cast<int>(catalogue.volumes.size()) + 1;
  if (volume.Header().number != number) {
    throw Failure(Visible(path.string()) + ": another volume of the set");
  }
  if (isFirst) {
    first = volume.Header();
    recordsLeft = std::max<std::int64_t>(first.files, 0);
    catalogue.identity = IdentityOf(first);
    isFirst = false;
  } else if (!first.IsOfSameSet(volume.Header())) {
    throw Failure(Visible(path.string()) + ": a volume of another set");
  }
  // Every byte goes into the volume's checksum, in order; those of the files are computed on the
  // way.
  Sha256 volumeSum;
  std::vector<unsigned char> block(1 << 16);
  std::uint64_t at = 0;
  // Reads on up to `end`, or to the end of the volume.
  const auto pass = [&](std::uint64_t end, bool isFile) {
    while (at < end) {
      const std::uint64_t wanted = std::min<std::uint64_t>(block.size(), end - at);
      const std::uint64_t here = std::min(wanted, volume.Await(at + wanted) - at);
      if (here == 0) return;
      const auto piece = std::span(block).first(static_cast<std::size_t>(here));
      volume.Read(at, piece);
      volumeSum.Add(piece);
      if (isFile) fileSum.Add(piece);
      at += piece.size();
      StopIfAsked();
    }
  };
  const auto passFile = [&] {
    const std::uint64_t start = at;
    pass(at + bytesLeft, true);
    bytesLeft -= at - start;
    if (bytesLeft == 0) catalogue.files.back().sha256 = fileSum.Finish();
  };
  pass(volume.PayloadOffset(), false);
  volume.Skip(bytesLeft);
  if (bytesLeft > 0) passFile();
  while (bytesLeft == 0 && recordsLeft > 0) {
    const std::optional<VolumeRecord> record = volume.Next();
    if (!record) break;
    catalogue.files.push_back({.name = record->name,
                               .bytes = record->size,
                               .time = record->time,
                               .attribute = record->attribute,
                               .volume = number,
                               .offset = record->offset});
    fileSum = Sha256();
    bytesLeft = record->size;
    --recordsLeft;
    pass(record->offset, false);
    passFile();
  }
  pass(volume.Size(), false);
  catalogue.volumes.push_back(
      {number, path.filename().string(), volume.Size(), volumeSum.Finish()});
}

fs::path CataloguePath(const VolumeName& name) {
  const fs::path first = name.Path(1);
  std::string file = FromUtf8(name.Word()).filename().string();
  const std::size_t mark = file.find('#');
  if (mark != std::string::npos) file.replace(mark, 1, "catalogue");
  return first.parent_path() / FromUtf8(file + ".json");
}

fs::path ChecksumPath(const fs::path& volume) {
  return volume.string() + ".sha256";
}

void WriteCatalogue(const Catalogue& catalogue, const fs::path& path) {
  const Json json =
      Object(Field{"kozor-catalogue", kFormat}, Field{"identity", catalogue.identity},
             Field{"volumes", PutAll(catalogue.volumes)}, Field{"files", PutAll(catalogue.files)},
             Field{"folders", PutAll(catalogue.folders)}, Field{"links", PutAll(catalogue.links)});
  WriteWhole(path, json.dump(1, ' ', false, Json::error_handler_t::replace) + '\n');
}

void WriteChecksum(const CatalogueVolume& volume, const fs::path& volumePath) {
  WriteWhole(ChecksumPath(volumePath), volume.sha256 + "  " + volume.file + '\n');
}

std::optional<Catalogue> ReadCatalogue(const fs::path& path) {
  std::ifstream file(CallPath(path), std::ios::binary);
  if (!file && !Exists(path)) return std::nullopt;
  if (!file) throw Failure(Visible(path.string()) + ": can't read");
  const Failure damage(Visible(path.string()) +
                       ": the catalogue is damaged (move it away to do without)");
  try {
    const Json json = Json::parse(file);
    if (json.at("kozor-catalogue") != kFormat) {
      throw Failure(Visible(path.string()) + ": written by a newer version of kozor");
    }
    Catalogue catalogue;
    catalogue.identity = json.at("identity");
    GetAll(json.at("volumes"), catalogue.volumes);
    GetAll(json.at("files"), catalogue.files);
    GetAll(json.at("folders"), catalogue.folders);
    GetAll(json.at("links"), catalogue.links);
    return catalogue;
  } catch (const nlohmann::json::exception&) {
    throw damage;
  } catch (const std::out_of_range&) {
    throw damage;
  }
}

std::optional<std::string> ReadChecksum(const fs::path& volume) {
  std::ifstream file(CallPath(ChecksumPath(volume)));
  std::string sum;
  if (!(file >> sum)) return std::nullopt;
  return sum;
}

}  // namespace kozor::program
