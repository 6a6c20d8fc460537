// make_big_score OUT [MEASURES [PARTS]]: writes the benchmark's big score to a file, to open it
// in other programs (MuseScore 3 side by side with the host) or by hand.
#include "bench/big_score.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>

int main(int argc, char** argv)
{
    if (argc < 2 || argc > 4) {
        std::cerr << "usage: make_big_score OUT [MEASURES [PARTS]]\n";
        return 2;
    }
    const int measures = argc > 2 ? std::atoi(argv[2]) : 2000;
    const int parts = argc > 3 ? std::atoi(argv[3]) : 8;
    if (measures < 1 || parts < 2) {
        std::cerr << "make_big_score: at least 1 measure and 2 parts\n";
        return 2;
    }
    const std::string score = bench::BigScore(measures, parts);
    std::ofstream out(argv[1], std::ios::binary);
    out << score;
    if (!out.good()) {
        std::cerr << "make_big_score: cannot write " << argv[1] << "\n";
        return 1;
    }
    std::cout << argv[1] << ": " << measures << " measures, " << parts << " parts, " << score.size() << " bytes\n";
    return 0;
}
