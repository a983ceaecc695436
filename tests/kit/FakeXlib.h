// SPDX-License-Identifier: Apache-2.0
/// What the two halves of the faked Xlib share: connections, and the words of the journal.
#ifndef TESTS_KIT_FAKEXLIB_H
#define TESTS_KIT_FAKEXLIB_H

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <string>

namespace kit {

inline constexpr int kScreens = 2;
inline constexpr Window kFirstRoot = 0x101;
inline constexpr unsigned long kFirstBlack = 0xB0;

struct FakeDisplay;

/// Null for a Display that is not one of ours or is closed; that is a violation, except for null.
FakeDisplay* Find(Display* display);
std::string DisplayName(Display* display);  ///< checks it, too
std::string WindowName(Window window);      ///< "0x400001", "-1", "root(0)"
std::string AtomName(Atom atom);
std::string GCName(Display* display, GC gc);  ///< checks that it was made on that connection
std::string PixelName(unsigned long pixel);   ///< "black(0)" or the number
std::string VisualName(const FakeDisplay* display, const Visual* visual);

}  // namespace kit

#endif
