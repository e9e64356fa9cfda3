#include "series/series_decode.h"

#include <atomic>
#include <thread>

#include "core/files.h"
#include "core/runtime_error.h"
#include "series/picture_io.h"

namespace lumiquilt {

std::vector<DecodedMember> decodeSeries(const SeriesPattern& pattern, int threads) {
    std::vector<DecodedMember> members;
    for (int k = 1; k <= kMaxImages + 1; ++k) {
        std::string name;
        try {
            name = memberName(pattern, k);
        } catch (const RuntimeError&) {
            break;
        }
        if (!fileExists(name)) {
            break;
        }
        members.push_back({name, QImage(), 0});
    }
    // The extra member only says that the limit was passed; it isn't decoded.
    const size_t toDecode = std::min<size_t>(members.size(), kMaxImages);
    std::atomic<size_t> next{0};
    auto work = [&] {
        for (size_t i = next++; i < toDecode; i = next++) {
            try {
                members[i].picture = loadPicture(members[i].fileName);
            } catch (const RuntimeError& error) {
                members[i].errorNumber = error.number();
            }
        }
    };
    std::vector<std::thread> pool;
    for (int t = 1; t < threads && static_cast<size_t>(t) < toDecode; ++t) {
        pool.emplace_back(work);
    }
    work();
    for (auto& thread : pool) {
        thread.join();
    }
    return members;
}

MemberLoader loaderFor(const std::vector<DecodedMember>& members, std::vector<QImage>& pictures) {
    return [&members, &pictures](int k, const std::string& fileName) {
        const size_t i = static_cast<size_t>(k - 1);
        if (i >= members.size() || members[i].fileName != fileName) {
            throw RuntimeError(kFileNotFound);
        }
        if (members[i].errorNumber != 0) {
            throw RuntimeError(members[i].errorNumber);
        }
        pictures.push_back(members[i].picture);
    };
}

}  // namespace lumiquilt
