// groove_generator PATTERN_DIR OUTPUT_DIR
// Renders every *.groove file of PATTERN_DIR as "<title>.mid" in OUTPUT_DIR (each written to a
// temporary file first and renamed over the old one).
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "grooves/tools/groove_library.h"

namespace fs = std::filesystem;

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "usage: groove_generator PATTERN_DIR OUTPUT_DIR\n";
        return 2;
    }
    try {
        const fs::path output = argv[2];
        fs::create_directories(output);
        for (const grooves::RenderedGroove& groove : grooves::RenderLibrary(argv[1])) {
            const fs::path target = output / groove.fileName;
            const fs::path temporary = output / (groove.fileName + ".tmp");
            {
                std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
                out.write(reinterpret_cast<const char*>(groove.bytes.data()),
                          static_cast<std::streamsize>(groove.bytes.size()));
                if (!out.flush()) throw std::runtime_error(temporary.string() + ": cannot write");
            }
            fs::rename(temporary, target);
            std::cout << target.string() << " (" << groove.bytes.size() << " bytes)\n";
        }
    } catch (const std::exception& e) {
        std::cerr << "groove_generator: " << e.what() << "\n";
        return 1;
    }
    return 0;
}
