// SlowRing.cpp - the slow decoders of the methods without codes, Lzs and Lz5.
#include "tests/codec/SlowTwin.h"

namespace kozor::codec {
namespace {

// A real circular buffer, as the format describes it.
class SlowRing : public SlowTwin {
 public:
  SlowRing(SlowStream& stream, std::size_t size, Bytes initial, std::size_t start)
      : SlowTwin(stream, size), buffer(std::move(initial)), position(start) {}

 protected:
  void PutBuffered(unsigned byte) {
    Put(byte);
    buffer[position++ % buffer.size()] = static_cast<std::uint8_t>(byte);
  }
  void CopyFrom(std::size_t place, std::size_t length) {
    while (length-- != 0) PutBuffered(buffer[place++ % buffer.size()]);
  }

 private:
  Bytes buffer;
  std::size_t position;
};

class SlowLzs : public SlowRing {
 public:
  SlowLzs(SlowStream& stream, std::size_t size) : SlowRing(stream, size, Bytes(2048, ' '), 2031) {}

  void Step() override {
    if (in.Number(1) == 1) return PutBuffered(in.Number(8));
    const unsigned place = in.Number(11);
    CopyFrom(place, in.Number(4) + 2);
  }
};

class SlowLz5 : public SlowRing {
 public:
  SlowLz5(SlowStream& stream, std::size_t size) : SlowRing(stream, size, Initial(), 4078) {}

  void Step() override {
    if (flagsLeft == 0) {
      flags = in.Number(8);
      flagsLeft = 8;
    }
    const bool isLiteral = (flags >> (8 - flagsLeft--) & 1) != 0;
    const unsigned a = in.Number(8);
    if (isLiteral) return PutBuffered(a);
    const unsigned b = in.Number(8);
    CopyFrom(a + 256 * (b >> 4), (b & 15) + 3);
  }

 private:
  static Bytes Initial() {
    Bytes initial;
    for (int i = 0; i < 256; ++i) initial.insert(initial.end(), 13, static_cast<std::uint8_t>(i));
    for (int i = 0; i < 256; ++i) initial.push_back(static_cast<std::uint8_t>(i));
    for (int i = 255; i >= 0; --i) initial.push_back(static_cast<std::uint8_t>(i));
    initial.insert(initial.end(), 128, 0);
    initial.insert(initial.end(), 110, ' ');
    initial.insert(initial.end(), 18, 0);
    return initial;
  }
  unsigned flags = 0;
  unsigned flagsLeft = 0;
};

}  // namespace

SlowTwinPointer MakeSlowRing(Method method, SlowStream& stream, std::size_t size) {
  if (method == Method::Lzs) return std::make_unique<SlowLzs>(stream, size);
  return std::make_unique<SlowLz5>(stream, size);
}

}  // namespace kozor::codec
