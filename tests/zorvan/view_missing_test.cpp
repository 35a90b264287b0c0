// zorvan view in a build without a window library.
#include "tests/zorvan/run_tool.h"

namespace zorvan::tool {
namespace {

class ViewMissing : public ToolTest {};

TEST_F(ViewMissing, SaysSo) {
    ExpectFailure(RunTool({"view", Example("hello.json")}), 5, "built without SDL2");
}

}  // namespace
}  // namespace zorvan::tool
