// SPDX-License-Identifier: Apache-2.0
//
// The shapes of a book are numbered across all of its drawings, in clusters of 1,024 that belong to
// one drawing each. The drawing group (MS-ODRAW 2.2.12 OfficeArtDggContainer, in MSODRAWINGGROUP
// records) says whose cluster is whose and holds the pictures. A copy of a drawing gets a number
// and clusters of its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace workbook {

/// The drawing of a sheet or chart (2.2.13 OfficeArtDgContainer) whose records were joined.
struct Drawing {
    std::string data;
    /// Sizes that `data` had when an object without its source was met: the last shape before each
    /// becomes a picture.
    std::vector<std::size_t> pictures;
};

class DrawingGroup {
  public:
    /// That of the book whose globals `stream` begins with. Throws `Error`.
    static DrawingGroup of_book(std::string_view stream);
    /// `data` of the MSODRAWINGGROUP records, joined; none is like a damaged one.
    explicit DrawingGroup(std::string data);

    /// Makes `drawing`, which is equal to one of the book, a drawing of its own, in place. False
    /// when group or drawing break the format or no number is free; both are as before then.
    bool enter_copy(Drawing& drawing);

    bool has_changed() const { return has_changed_; }
    /// The data with all copies in it.
    std::string data() const;

  private:
    struct Cluster {
        std::uint32_t drawing = 0, used = 0;
    };

    void find_pictures(std::size_t begin, std::size_t end);

    std::string data_;
    std::size_t block_ = 0, block_end_ = 0; ///< the FDGG record, header included; 0 when damaged
    std::uint32_t highest_shape_ = 0, shapes_ = 0, drawings_ = 0;
    std::vector<Cluster> clusters_;
    std::vector<std::size_t> use_counts_; ///< positions of the pictures' use counts
    bool has_changed_ = false;
};

} // namespace workbook
