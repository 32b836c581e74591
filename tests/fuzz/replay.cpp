// Runs a fuzz target's entry once on every file of the folders given: its seed corpus and the
// inputs that once broke it. Built with the ordinary compiler, so CTest guards them all.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

int main(int argc, char **argv)
{
    namespace fs = std::filesystem;
    int replayed = 0;
    for (int a = 1; a < argc; ++a) {
        const fs::path folder(argv[a]);
        if (!fs::is_directory(folder)) {
            std::fprintf(stderr, "replay: no folder %s\n", argv[a]);
            return 1;
        }
        std::vector<fs::path> files;
        for (const auto &entry : fs::directory_iterator(folder)) {
            if (entry.is_regular_file() && entry.path().filename().string().front() != '.')
                files.push_back(entry.path());
        }
        std::sort(files.begin(), files.end());
        for (const fs::path &file : files) {
            std::ifstream in(file, std::ios::binary);
            const std::vector<char> bytes{std::istreambuf_iterator<char>(in), {}};
            // Named first, so the input that aborts is the last one in the log.
            std::fprintf(stderr, "%s\n", file.c_str());
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()),
                                   bytes.size());
            ++replayed;
        }
    }
    // An empty corpus would pass without testing anything.
    if (replayed == 0) {
        std::fprintf(stderr, "replay: no inputs\n");
        return 1;
    }
    std::printf("replayed %d inputs\n", replayed);
    return 0;
}
