#pragma once

#include <QImage>
#include <string>
#include <vector>

#include "series/series_name.h"

namespace lumiquilt {

/// A series read ahead of the loading loop: member k's picture or the error that
/// loading it raised.
struct DecodedMember {
    std::string fileName;
    QImage picture;
    int errorNumber = 0;
};

/// Decodes the members of a series from image 1 up to the first missing file (and
/// one more than the limit, so the limit can be told), on `threads` threads.
std::vector<DecodedMember> decodeSeries(const SeriesPattern& pattern, int threads);

/// A loader for the loading loop that hands out the decoded members in order.
MemberLoader loaderFor(const std::vector<DecodedMember>& members, std::vector<QImage>& pictures);

}  // namespace lumiquilt
