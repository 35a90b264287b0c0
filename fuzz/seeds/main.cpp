// make_seeds FOLDER EXAMPLES: writes the corpora that the fuzzers start from, FOLDER/TARGET/..., and the
// files that their inputs may name, FOLDER/files/... EXAMPLES is the folder of the example scenes.
#include <cstdio>
#include <exception>

#include "fuzz/seeds/seeds.h"

int main(int argc, char** argv) try {
    if (argc != 3) {
        std::fprintf(stderr, "make_seeds: expected the folder to write and the folder of the examples\n");
        return 1;
    }
    std::filesystem::remove_all(argv[1]);
    const zorvan::fuzz::SeedFolder folder(std::filesystem::absolute(argv[1]));
    AddContainers(folder);
    AddConversions(folder);
    AddFonts(folder);
    AddTools(folder);
    AddScenes(folder, std::filesystem::absolute(argv[2]));
    return 0;
} catch (std::exception const& error) {
    std::fprintf(stderr, "make_seeds: %s\n", error.what());
    return 1;
}
