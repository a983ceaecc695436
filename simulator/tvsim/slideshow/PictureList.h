// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_SLIDESHOW_PICTURELIST_H
#define SIMULATOR_TVSIM_SLIDESHOW_PICTURELIST_H

#include <string>
#include <vector>

#include "simulator/base/Result.h"

namespace sim::tvsim {

/// The pictures that the arguments name, as absolute paths: a file as it is, whatever it is called, and of a folder the
/// files with a picture's extension, by name. Errors: an argument is neither, or a folder has no picture.
Result<std::vector<std::string>> ListPictures(const std::vector<std::string>& arguments);

}  // namespace sim::tvsim

#endif
