// CArchive.cpp - see CArchive.h.
#include "platform/classlib/CArchive.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/base/ByteOrder.h"

namespace {

// Values that replace a short length: a longer one follows.
constexpr BYTE kLongLength = 0xFF;
constexpr WORD kWideText = 0xFFFE;  // 16-bit text follows
constexpr WORD kVeryLong = 0xFFFF;

// Bytes of a string that are read before more memory is allocated.
constexpr DWORD kFirstPiece = 0x10000;

}  // namespace

CArchive::CArchive(CFile* stream, unsigned int direction, int bufferSize)
    : file(stream),
      mode(direction),
      capacity(static_cast<unsigned int>(std::max(bufferSize, 128))),
      buffer(std::make_unique<BYTE[]>(capacity)) {}

CArchive::~CArchive() {
  try {
    Close();
  } catch (CException* error) {
    error->Delete();
  }
}

unsigned int CArchive::Read(void* target, unsigned int count) {
  if (!IsLoading()) throw new CArchiveException(CArchiveException::writeOnly);
  auto* bytes = static_cast<BYTE*>(target);
  unsigned int done = 0;
  while (done < count) {
    if (next == filled) {
      if (count - done >= capacity) return done + file->Read(bytes + done, count - done);
      next = filled = 0;
      filled = file->Read(buffer.get(), capacity);
      if (filled == 0) break;
    }
    const unsigned int piece = std::min(count - done, filled - next);
    std::memcpy(bytes + done, &buffer[next], piece);
    next += piece;
    done += piece;
  }
  return done;
}

void CArchive::Write(const void* source, unsigned int count) {
  if (!IsStoring()) throw new CArchiveException(CArchiveException::readOnly);
  if (count > capacity - next) Flush();
  if (count > capacity) return file->Write(source, count);
  std::memcpy(&buffer[next], source, count);
  next += count;
}

void CArchive::Flush() {
  const unsigned int done = std::exchange(next, 0);
  const unsigned int loaded = std::exchange(filled, 0);
  if (IsStoring()) {
    if (done > 0) file->Write(buffer.get(), done);
  } else if (done < loaded) {
    file->Seek(-std::int64_t{loaded - done}, CFile::current);
  }
}

void CArchive::Close() {
  if (file == nullptr) return;
  Flush();
  file = nullptr;
}

DWORD CArchive::ReadCount() {
  const auto count = ReadNumber<WORD>();
  return count == kVeryLong ? ReadNumber<DWORD>() : count;
}

void CArchive::WriteCount(DWORD count) {
  if (count < kVeryLong) return WriteNumber(static_cast<WORD>(count));
  WriteNumber(kVeryLong);
  WriteNumber(count);
}

CArchive& CArchive::operator<<(BYTE value) {
  WriteNumber(value);
  return *this;
}

CArchive& CArchive::operator<<(WORD value) {
  WriteNumber(value);
  return *this;
}

CArchive& CArchive::operator<<(DWORD value) {
  WriteNumber(value);
  return *this;
}

CArchive& CArchive::operator<<(const CString& value) {
  const auto length = static_cast<DWORD>(value.GetLength());
  if (length < kLongLength) {
    WriteNumber(static_cast<BYTE>(length));
  } else {
    WriteNumber(kLongLength);
    if (length < kWideText) {
      WriteNumber(static_cast<WORD>(length));
    } else {
      WriteNumber(kVeryLong);
      WriteNumber(length);
    }
  }
  Write(static_cast<const char*>(value), length);
  return *this;
}

CArchive& CArchive::operator>>(BYTE& value) {
  value = ReadNumber<BYTE>();
  return *this;
}

CArchive& CArchive::operator>>(WORD& value) {
  value = ReadNumber<WORD>();
  return *this;
}

CArchive& CArchive::operator>>(DWORD& value) {
  value = ReadNumber<DWORD>();
  return *this;
}

CArchive& CArchive::operator>>(CString& value) {
  const DWORD length = ReadStringLength();
  CString text;
  for (DWORD done = 0; done < length;) {
    // Grow to at most twice the bytes already read: the length isn't trusted.
    const DWORD piece = std::min(length - done, std::max(done, kFirstPiece));
    char* bytes = text.GetBuffer(static_cast<int>(done + piece));
    const unsigned int count = Read(bytes + done, piece);
    if (count < piece) throw new CArchiveException(CArchiveException::endOfFile);
    done += piece;
    text.ReleaseBuffer(static_cast<int>(done));
  }
  value = std::move(text);
  return *this;
}

template <class Number>
void CArchive::WriteNumber(Number value) {
  BYTE bytes[sizeof(Number)];
  kozor::StoreLittle(bytes, value, sizeof(bytes));
  Write(bytes, sizeof(bytes));
}

template <class Number>
Number CArchive::ReadNumber() {
  BYTE bytes[sizeof(Number)];
  if (Read(bytes, sizeof(bytes)) != sizeof(bytes)) {
    throw new CArchiveException(CArchiveException::endOfFile);
  }
  return kozor::LoadLittle<Number>(bytes);
}

DWORD CArchive::ReadStringLength() {
  const auto shortLength = ReadNumber<BYTE>();
  if (shortLength != kLongLength) return shortLength;
  const auto middleLength = ReadNumber<WORD>();
  if (middleLength == kWideText) throw new CArchiveException(CArchiveException::badSchema);
  if (middleLength != kVeryLong) return middleLength;
  const auto length = ReadNumber<DWORD>();
  if (length > DWORD{CString::kMaxLength}) {
    throw new CArchiveException(CArchiveException::badSchema);
  }
  return length;
}
