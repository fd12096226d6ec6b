// Replays every file of the corpus folders given on the command line through the target, with the
// ordinary compiler: the suite keeps what fuzzing found covered. Exit 0 when all ran.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
    size_t count = 0;
    for (int i = 1; i < argc; ++i)
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            std::ifstream in(entry.path(), std::ios::binary);
            const std::string bytes((std::istreambuf_iterator<char>(in)), {});
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
            ++count;
        }
    std::printf("replayed %zu inputs\n", count);
    return count > 0 ? 0 : 1;
}
