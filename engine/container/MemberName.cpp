// MemberName.cpp - see MemberName.h.
#include "engine/container/MemberName.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "engine/container/Text.h"
#include "platform/text/Path.h"

namespace kozor::container {
namespace {

// Separates components in byte strings; it is not part of any character in the known code pages.
constexpr char kSeparatorByte = '\xFF';
constexpr char16_t kSeparatorUnit = 0xFFFF;  // the same in UTF-16 fields

// Decoded names: '/' separates too.
constexpr text::PathRules kRules = {.slashSeparates = true};

bool IsForbidden(char16_t unit) {
  if (unit > u'|') return false;
  return unit < 0x20 || std::u16string_view(u"<>:\"|?*").find(unit) != std::u16string_view::npos;
}

bool IsDrive(std::u16string_view text) {
  if (text.size() < 2 || text[1] != u':') return false;
  return (text[0] >= u'A' && text[0] <= u'Z') || (text[0] >= u'a' && text[0] <= u'z');
}

// Some writers put a comment after a zero byte.
std::string_view CutAtNul(std::string_view bytes) {
  return bytes.substr(0, bytes.find('\0'));
}

// The pieces between separator bytes, to be decoded one by one.
std::vector<std::string_view> SplitAtSeparatorByte(std::string_view bytes) {
  std::vector<std::string_view> pieces;
  for (;;) {
    const std::size_t end = bytes.find(kSeparatorByte);
    pieces.push_back(bytes.substr(0, end));
    if (end == std::string_view::npos) return pieces;
    bytes.remove_prefix(end + 1);
  }
}

bool IsValidIn(unsigned int codePage, const std::string_view bytes) {
  std::u16string ignored;
  const auto pieces = SplitAtSeparatorByte(bytes);
  return std::all_of(pieces.begin(), pieces.end(),
                     [&](std::string_view piece) { return DecodeText(codePage, piece, ignored); });
}

// The code page of a member's byte strings.
unsigned int ChooseCodePage(const NameFields& fields, std::string_view all) {
  if (fields.codePage != 0 && IsValidIn(fields.codePage, all)) return fields.codePage;
  return !IsValidIn(kShiftJis, all) && IsValidIn(kUtf8, all) ? kUtf8 : kShiftJis;
}

std::u16string DecodePieces(unsigned int codePage, std::string_view bytes, bool& altered) {
  std::u16string text;
  const char16_t* separator = u"";
  for (const std::string_view piece : SplitAtSeparatorByte(bytes)) {
    text += separator;
    text += DecodeTextLossy(codePage, piece, altered);
    separator = u"\\";
  }
  return text;
}

std::u16string FromUtf16Field(std::u16string text) {
  text.resize(std::min(text.size(), text.find(u'\0')));
  std::replace(text.begin(), text.end(), kSeparatorUnit, u'\\');
  return text;
}

// What a path has before its last component, with the separator.
std::u16string DirectoryOf(std::u16string path) {
  const auto last = std::find_if(path.rbegin(), path.rend(),
                                 [](char16_t unit) { return kRules.IsSeparator(unit); });
  path.erase(last.base(), path.end());
  return path;
}

// The whole decoded path of a member, not yet cleaned.
std::u16string GatherPath(const NameFields& fields, bool& altered) {
  const std::string none;
  const std::string_view directoryBytes = CutAtNul(fields.directory ? *fields.directory : none);
  const std::string_view fileBytes = CutAtNul(fields.file ? *fields.file : fields.base);
  const std::string all = std::string(directoryBytes) + kSeparatorByte + std::string(fileBytes);
  const unsigned int codePage = ChooseCodePage(fields, all);

  std::u16string path = fields.unicodeDirectory ? FromUtf16Field(*fields.unicodeDirectory)
                                                : DecodePieces(codePage, directoryBytes, altered);
  if (!path.empty() && !kRules.IsSeparator(path.back())) path += u'\\';
  if (!fields.unicodeFile) return path + DecodePieces(codePage, fileBytes, altered);
  // Without a directory field the byte string may hold the directory too.
  if (path.empty()) path = DirectoryOf(DecodePieces(codePage, fileBytes, altered));
  return path + FromUtf16Field(*fields.unicodeFile);
}

// Fast path for most members: ASCII names without anything to drop or replace.  None for all
// others.
std::optional<std::u16string> PlainPath(const NameFields& fields) {
  if (fields.unicodeDirectory || fields.unicodeFile) return std::nullopt;
  std::u16string path;
  const auto append = [&path](std::string_view bytes) {
    for (const char byte : bytes) {
      const auto unit = static_cast<unsigned char>(byte);
      const bool isSeparator = byte == kSeparatorByte || kRules.IsSeparator(unit);
      if (!isSeparator && (unit >= 0x80 || IsForbidden(unit))) return false;
      path += isSeparator ? u'\\' : char16_t{unit};
    }
    return true;
  };
  if (fields.directory && !append(*fields.directory)) return std::nullopt;
  if (!path.empty() && path.back() != u'\\') path += u'\\';
  if (!append(fields.file ? *fields.file : fields.base)) return std::nullopt;
  if (path.ends_with(u'\\')) path.pop_back();
  const bool isClean = !path.empty() && path[0] != u'.' && path[0] != u'\\' &&
                       path.find(u"\\.") == path.npos && path.find(u"\\\\") == path.npos &&
                       path.back() != u'\\';
  return isClean ? std::optional(std::move(path)) : std::nullopt;
}

// Whether a path has a drive letter or a ".." component.
bool Strays(std::u16string_view path) {
  if (IsDrive(path)) return true;
  while (!path.empty()) {
    if (text::TakeComponent(path, kRules) == u"..") return true;
  }
  return false;
}

// Drops unsafe parts of a path and replaces forbidden characters by '_'.  The result has no
// trailing separator.
std::u16string CleanPath(std::u16string_view path, bool& altered) {
  std::u16string clean;
  const bool isRooted = !path.empty() && kRules.IsSeparator(path.front());
  if (IsDrive(path)) path.remove_prefix(2);
  while (!path.empty()) {
    std::u16string component(text::TakeComponent(path, kRules));
    if (component.empty() || component == u"." || component == u"..") continue;
    for (char16_t& unit : component) {
      if (!IsForbidden(unit)) continue;
      unit = u'_';
      altered = true;
    }
    if (isRooted || !clean.empty()) clean += u'\\';
    clean += component;
  }
  return clean;
}

// Leaves the part before the bar in `file` and returns the part after it.
template <typename Text>
Text CutTarget(std::optional<Text>& directory, Text& file, typename Text::value_type separator,
               typename Text::value_type bar) {
  Text whole = directory.value_or(Text());
  if (!whole.empty() && !whole.ends_with(separator)) whole += separator;
  whole += file;
  const std::size_t cut = whole.find(bar);
  if (cut == Text::npos) return {};
  directory.reset();
  file = whole.substr(0, cut);
  return whole.substr(cut + 1);
}

}  // namespace

ShownName DecodeName(const NameFields& fields, bool isDirectory, unsigned int workingPage) {
  ShownName shown;
  std::optional<std::u16string> plain = PlainPath(fields);
  if (!plain) {
    const std::u16string gathered = GatherPath(fields, shown.altered);
    shown.strayed = Strays(gathered);
    plain = CleanPath(gathered, shown.altered);
  }
  std::u16string& path = *plain;
  if (path.empty()) return shown;
  if (isDirectory) path += u'\\';
  shown.text = EncodeTextLossy(workingPage, path, shown.altered);
  shown.key = shown.altered ? KeyOf(shown.text, workingPage) : FoldCase(path);
  return shown;
}

std::string_view CutName(std::string_view name, std::size_t limit, unsigned int workingPage) {
  if (name.size() <= limit) return name;
  const text::CodePage* const page = text::FindCodePage(workingPage);
  std::size_t length = 0;
  for (;;) {
    const std::size_t next = length + page->decode(name.substr(length)).bytes;
    if (next > limit) return name.substr(0, length);
    length = next;
  }
}

std::string MarkName(std::string_view name, std::size_t number, unsigned int workingPage) {
  const bool isDirectory = name.ends_with('\\');
  const std::string mark = '~' + std::to_string(number) + (isDirectory ? "\\" : "");
  // If the trailing byte is the second one of a character, CutName drops the whole character.
  const std::string_view plain = isDirectory ? CutName(name, name.size() - 1, workingPage) : name;
  return std::string(CutName(plain, kMaxShownBytes - mark.size(), workingPage)) + mark;
}

std::string StoredNameOf(std::string_view path, unsigned int workingPage) {
  bool altered = false;
  const std::u16string given = DecodeTextLossy(workingPage, path, altered);
  const std::size_t rootUnits = text::BasicPath<char16_t>(given, kRules).Root().size();
  const std::u16string clean = CleanPath(std::u16string_view(given).substr(rootUnits), altered);
  return altered ? std::string() : EncodeTextLossy(workingPage, clean, altered);
}

std::string NormalizeName(std::string_view text, unsigned int workingPage) {
  bool ignored = false;
  std::u16string decoded = DecodeTextLossy(workingPage, text, ignored);
  std::replace(decoded.begin(), decoded.end(), u'/', u'\\');
  return EncodeTextLossy(workingPage, decoded, ignored);
}

std::u16string KeyOf(std::string_view name, unsigned int workingPage) {
  bool ignored = false;
  return FoldCase(DecodeTextLossy(workingPage, name, ignored));
}

std::string TakeLinkTarget(NameFields& fields) {
  if (!fields.file) fields.file = fields.base;
  std::string target = CutTarget(fields.directory, *fields.file, kSeparatorByte, '|');
  if (fields.unicodeFile) {
    CutTarget(fields.unicodeDirectory, *fields.unicodeFile, kSeparatorUnit, u'|');
  }
  return target;
}

StoredName EncodeName(std::string_view name, unsigned int workingPage, NameEncoding encoding) {
  bool ignored = false;
  const std::u16string path = DecodeTextLossy(workingPage, name, ignored);
  StoredName stored;
  std::string bytes;
  const bool isShiftJis =
      encoding == NameEncoding::ShiftJisIfPossible && EncodeText(kShiftJis, path, bytes);
  const unsigned int codePage = isShiftJis ? kShiftJis : kUtf8;
  if (!IsAscii(name)) stored.codePage = codePage;

  std::u16string_view rest = path;
  for (;;) {
    const std::size_t end = rest.find(u'\\');
    if (end == std::u16string_view::npos) break;
    stored.directory += EncodeTextLossy(codePage, rest.substr(0, end), ignored) + kSeparatorByte;
    rest.remove_prefix(end + 1);
  }
  stored.file = EncodeTextLossy(codePage, rest, ignored);
  return stored;
}

}  // namespace kozor::container
