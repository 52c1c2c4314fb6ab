// List.cpp - kozor list: lists the members of an archive.
#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Console.h"
#include "Contents.h"
#include "Host.h"
#include "Listing.h"

namespace kozor::program {

namespace {

constexpr std::string_view kHelp =
    R"(Usage: kozor list [OPTION]... ARCHIVE [MASK]...

Lists the members of an LZH archive: size in bytes, last change, attributes (r
read-only, h hidden, s system, a archive) and name.  A slash ends the names of
directories; an arrow shows where a symbolic link leads; control characters in
names appear as \xNN.  A MASK selects members as in "kozor extract".
)";

constexpr std::array<Option, 6> kOptions = {{
    {"-l,--long", "", "also show method, header level, packed size, ratio,\nCRC and mode"},
    {"--json", "", "print everything that is known as one JSON object"},
    {"--names", "", "print names only, one per line"},
    {"--null", "", "with --names: end each name with a zero byte"},
    kExcludeOption,
    kNamePageOption,
}};

std::string HostStyle(std::string name) {
  for (char& c : name) {
    if (c == '\\') c = '/';
  }
  return name;
}

std::string ShownName(const Member& member) {
  if (member.kind == MemberKind::Nameless) return "(no name)";
  const std::string name = VisibleLibraryName(member.name);
  return member.kind == MemberKind::Link ? name + " -> " + Visible(member.linkTarget) : name;
}

std::string SizeColumn(const Member& member) {
  return member.kind == MemberKind::File ? std::to_string(member.size) : "-";
}

std::string LongLine(const Member& member) {
  std::array<char, 96> text{};
  const double ratio = member.size == 0 ? 100.0
                                        : 100.0 * static_cast<double>(member.packedBytes) /
                                              static_cast<double>(member.size);
  std::snprintf(text.data(), text.size(), "%s %d %10llu %6.1f%%  ", member.method.c_str(),
                member.level, static_cast<unsigned long long>(member.packedBytes), ratio);
  std::string line = text.data();
  if (member.crc && member.kind == MemberKind::File) {
    std::snprintf(text.data(), text.size(), "%04x", *member.crc);
    line += text.data();
  } else {
    line += "----";
  }
  if (member.unixMode != 0) {
    std::snprintf(text.data(), text.size(), "  %06o", member.unixMode);
    line += text.data();
  } else {
    line += "       -";
  }
  return line + EntryLine(SizeColumn(member), TimeText(member.Seconds()), member.attribute,
                          ShownName(member));
}

nlohmann::ordered_json Json(const Member& member) {
  static constexpr std::array<const char*, 4> kKinds = {"file", "folder", "link", "nameless"};
  nlohmann::ordered_json json;
  json["name"] = HostStyle(member.name);
  json["kind"] = kKinds.at(static_cast<std::size_t>(member.kind));
  if (member.kind == MemberKind::Link) json["target"] = member.linkTarget;
  json["size"] = member.size;
  json["packedSize"] = member.packedBytes;
  json["method"] = member.method;
  json["level"] = member.level;
  if (member.crc) json["crc16"] = *member.crc;
  json["modified"] = member.Seconds();
  json["attributes"] = AttributeText(member.attribute);
  if (member.unixMode != 0) json["mode"] = member.unixMode;
  if (!member.comment.empty()) json["comment"] = member.comment;
  return json;
}

std::string Counted(std::size_t count, const char* what) {
  return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

// Prints members as they are read: a million of them take no memory but the index.
class Printer {
 public:
  explicit Printer(const Arguments& given) : arguments(given) {}

  void Print(const Member& member) {
    bytes += member.size;
    ++counts.at(static_cast<std::size_t>(member.kind));
    if (arguments.Has("--names")) {
      PrintText(HostStyle(member.name) + (arguments.Has("--null") ? '\0' : '\n'));
    } else if (arguments.Has("--long")) {
      PrintLine(LongLine(member));
    } else {
      PrintLine(EntryLine(SizeColumn(member), TimeText(member.Seconds()), member.attribute,
                          ShownName(member)));
    }
  }

  void Finish() const {
    if (arguments.Has("--names")) return;
    const auto [files, folders, links, nameless] = counts;
    std::string line = std::to_string(bytes) + " bytes in " + Counted(files, "file");
    if (folders > 0) line += ", " + Counted(folders, "folder");
    if (links > 0) line += ", " + Counted(links, "link");
    if (nameless > 0) line += ", " + std::to_string(nameless) + " without a name";
    PrintLine(line);
  }

 private:
  const Arguments& arguments;
  std::uint64_t bytes = 0;
  std::array<std::size_t, 4> counts{};
};

class JsonPrinter {
 public:
  explicit JsonPrinter(const std::string& archive) {
    PrintText("{\n  \"archive\": " + Dump(archive) + ",\n  \"members\": [");
  }

  void Print(const Member& member) {
    std::string text = "\n" + Dump(Json(member));
    for (std::size_t at = 0; at != text.npos; at = text.find('\n', at + 1)) {
      text.insert(at + 1, kIndent);
    }
    PrintText((isFirst ? "" : ",") + text);
    isFirst = false;
  }

  void Finish() const { PrintLine(isFirst ? "]\n}" : "\n  ]\n}"); }

 private:
  static constexpr const char* kIndent = "    ";
  static std::string Dump(const nlohmann::ordered_json& json) {
    return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
  }

  bool isFirst = true;
};

template <typename MemberPrinter>
void PrintAll(ArchiveReader& reader, const Arguments& arguments, MemberPrinter printer) {
  const std::vector<bool> chosen =
      reader.Choose(arguments.OperandsFrom(1), MaskList(arguments.Values("--exclude")));
  for (std::size_t i = 0; i < chosen.size(); ++i) {
    if (chosen[i]) printer.Print(reader.At(i));
  }
  printer.Finish();
}

void List(const Arguments& arguments) {
  const std::string& name = arguments.Operand(0, "ARCHIVE");
  arguments.Exclude("--json", {"--names", "--long"});
  arguments.Exclude("--names", {"--long"});
  arguments.Require("--null", "--names");
  ChooseNamePage(arguments);
  SourceArchive archive(name);
  if (arguments.Has("--json")) return PrintAll(archive.Reader(), arguments, JsonPrinter(name));
  PrintAll(archive.Reader(), arguments, Printer(arguments));
}

}  // namespace

const Command kListCommand = {"list", "list the members of an archive", kHelp, kOptions, List};

}  // namespace kozor::program
