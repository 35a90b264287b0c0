// Any texture over the whole viewport, for tests that have the driver sample one.
#pragma once

#include <GLES2/gl2.h>

namespace zorvan {

// A quad and its program become current: glDrawArrays(GL_TRIANGLE_STRIP, 0, 4) covers the viewport with the
// bound texture, its first row at the bottom.
void SetUpTexturedQuad();

// Bound from now on, without filters; the caller deletes it.
GLuint BindNewTexture();

}  // namespace zorvan
