// SPDX-License-Identifier: Apache-2.0
/// printf formatting in which addresses, threads and build stamps come out under their names.
#ifndef TESTS_KIT_MASKEDFORMAT_H
#define TESTS_KIT_MASKEDFORMAT_H

#include <cstdarg>
#include <string>

namespace kit {

/// Formats like vsnprintf, conversion by conversion: %p and %x of a known handle, object or thread give its name in
/// angle brackets, a %s that reads like a compiler's date or time stamp gives "<date>" or "<time>".
std::string MaskedFormat(const char* format, va_list arguments);

}  // namespace kit

#endif
