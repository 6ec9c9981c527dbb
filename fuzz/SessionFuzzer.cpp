#include "RoundTrip.h"
#include "records/RecordsJson.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ovel::fuzz::checkRoundTrip(data, size, ovel::decodeSession, ovel::encodeSession);
    return 0;
}
