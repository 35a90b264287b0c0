// The little GL state that the recording functions keep.
#pragma once

namespace recording_gl {

void ForgetObjects();
// Sets the error flag when the script says that this call fails.
void RaiseScriptedError(char const* function);

}  // namespace recording_gl
