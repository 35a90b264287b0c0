#pragma once

#include <gtest/gtest.h>

#include "core/scene.h"

namespace zorvan::test {

// Saves the scene, loads that in its place and saves it again, to the same text.
inline void ExpectSavesWhatItLoads(Scene& scene, ClassRegistry& registry) {
    std::string first, second;
    ASSERT_TRUE(scene.Save(first)) << scene.Error();
    ASSERT_TRUE(scene.Parse(first, registry)) << scene.Error() << first;
    ASSERT_TRUE(scene.Save(second));
    EXPECT_EQ(second, first);
}

}  // namespace zorvan::test
