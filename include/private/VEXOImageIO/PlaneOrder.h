#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "VEXOImageIO/Calibration.h"
#include "VEXOImageIO/File.h"

namespace vexo::image::io {

/// Which plane each image of a file is: there are so many images along each axis, those along order[0] lie
/// next to each other.
struct PlaneOrder {
  std::size_t z = 1, c = 1, t = 1;
  std::string order = "czt";
  std::vector<std::size_t> places;  ///< of the images in this order; empty: as they come

  struct Place {
    std::size_t z, c, t;
  };
  Place find(std::size_t image) const;
};

/// True when a description is that of an OME-TIFF.
bool isOmeXml(const std::string& description);

/// What an OME-TIFF says about its pages: their number, size and samples per pixel are known. `directories`
/// are the numbers of their directories in the file. Throws when the XML is not about these pages.
struct OmePages {
  std::size_t width, height, samples;
  const std::vector<std::size_t>& directories;
};
PlaneOrder readOmeXml(const File& file, const std::string& description, const OmePages& pages,
                      Calibration& calibration);

}  // namespace vexo::image::io
