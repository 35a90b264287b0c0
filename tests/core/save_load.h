#pragma once

#include <gtest/gtest.h>

#include "core/scene.h"

namespace zorvan::test {

// Saves the scene, loads that in its place and saves it again, to the same text, which is the result.
inline std::string ExpectSavesWhatItLoads(Scene& scene, ClassRegistry& registry) {
    std::string first, second;
    EXPECT_TRUE(scene.Save(first)) << scene.Error();
    EXPECT_TRUE(scene.Parse(first, registry) && scene.Save(second)) << scene.Error() << first;
    EXPECT_EQ(second, first);
    return second;
}

}  // namespace zorvan::test
