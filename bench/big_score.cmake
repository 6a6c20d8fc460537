# The big score generator, a library of its own: the benchmarks time the host on it and the
# MusicXML tests check that it is a sound score. Included from both, defined once.
include_guard(GLOBAL)
add_library(big_score STATIC ${CMAKE_CURRENT_LIST_DIR}/big_score.cpp)
target_include_directories(big_score PUBLIC ${PROJECT_SOURCE_DIR})
tamberlyne_warnings(big_score)
