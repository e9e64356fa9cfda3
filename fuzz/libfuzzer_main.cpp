// The libFuzzer front of one entry, chosen at build time by LUMIQUILT_FUZZ_ENTRY.
#include <QtGlobal>
#include <cstdio>
#include <cstdlib>

#include "fuzz/fuzz_entries.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // Decoders warn about every broken input; millions of warnings only slow the run.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    try {
        lumiquilt::fuzz::LUMIQUILT_FUZZ_ENTRY(data, size);
    } catch (const lumiquilt::fuzz::FuzzFailure& failure) {
        // The abort makes libFuzzer keep the input as a crash.
        std::fprintf(stderr, "fuzz failure: %s\n", failure.what());
        std::abort();
    }
    return 0;
}
