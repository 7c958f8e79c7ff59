// Runs a fuzz target once over each file of its corpus folders: the corpus as a fast,
// deterministic test where libFuzzer is not linked.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

int main(int argc, char **argv)
{
    std::vector<std::filesystem::path> files;
    for (int i = 1; i < argc; ++i) {
        if (std::filesystem::is_directory(argv[i])) {
            for (const auto &entry : std::filesystem::directory_iterator(argv[i]))
                if (entry.is_regular_file())
                    files.push_back(entry.path());
        } else {
            files.push_back(argv[i]);
        }
    }
    std::sort(files.begin(), files.end());
    if (files.empty()) {
        fprintf(stderr, "no corpus files\n");
        return 1;
    }
    for (const auto &path : files) {
        std::ifstream file(path, std::ios::binary);
        std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        // A copy of exactly the file's size, so that a read behind the input is seen.
        uint8_t *input = new uint8_t[bytes.size() ? bytes.size() : 1];
        std::copy(bytes.begin(), bytes.end(), input);
        LLVMFuzzerTestOneInput(input, bytes.size());
        delete[] input;
    }
    printf("%zu inputs\n", files.size());
    return 0;
}
