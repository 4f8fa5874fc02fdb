// The carving tests of one block, with the lengths of both file systems.
#include "FuzzSupport.h"
#include "carving/SignatureTest.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::init();
    // The block sizes the pass hands out are cluster sizes; any length is tested here.
    const SignatureHit ntfs = SignatureTest::test(data, size, SignatureTest::ntfsLengths());
    const SignatureHit fat = SignatureTest::test(data, size, SignatureTest::fat32Lengths(4096));
    if (ntfs.found() != fat.found())
        __builtin_trap(); // the kind of a block can't depend on the file system's lengths
    return 0;
}
