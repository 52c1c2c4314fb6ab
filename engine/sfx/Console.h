// Console.h - what the program says: lines on standard output, complaints on standard error.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace kozor::sfx {

// The program's own name, in front of complaints; it must hold good for ever.
void SetProgramName(std::string_view name);

// Writes a line to standard output, through a buffer.
void Say(std::initializer_list<std::string_view> pieces);
// Writes what is in the buffer.  False if something could not be written, now or before.
bool FlushOutput();

// Writes a line to standard error, behind what has been said so far.
void Complain(std::initializer_list<std::string_view> pieces);

// Complains and ends the program with status 1.
[[noreturn]] void Die(std::string_view reason);

// Text for a terminal: '?' stands for each byte that is no UTF-8, for each control character and
// for those that turn the direction of writing.
std::string Visible(std::string_view text);

// The pieces as one text.
std::string Join(std::initializer_list<std::string_view> pieces);

// A number in decimal digits, filled up in front to `width`, at most 20.
std::string Decimal(std::uint64_t number, std::size_t width = 1, char fill = ' ');

// Why the system refused, by its negative error number.
std::string Reason(long error);

}  // namespace kozor::sfx
