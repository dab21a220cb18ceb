// Runs one model on the inputs of libFuzzer, which keeps the input of a check that fails.
#include MODEL_HEADER

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tests::MODEL(tests::Input({data, data + size}));
    return 0;
}
