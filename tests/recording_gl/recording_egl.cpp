// The EGL functions that the plug-in uses. Tests use small numbers as handles; the log shows them.
#include <EGL/egl.h>

#include <cstring>

#include "tests/recording_gl/recorder.h"

using Handle = intptr_t;
using Function = __eglMustCastToProperFunctionPointerType;

extern "C" void glProgramBinaryOES(GLuint program, GLenum format, void const* binary, GLint length);

ANSWERED(EGLBoolean, eglMakeCurrent,
         (EGLDisplay display, EGLSurface draw, EGLSurface read, EGLContext context), EGL_TRUE,
         Handle(display), Handle(draw), Handle(read), Handle(context))
ANSWERED(EGLBoolean, eglDestroySurface, (EGLDisplay display, EGLSurface surface), EGL_TRUE, Handle(display),
         Handle(surface))
ANSWERED(EGLBoolean, eglDestroyContext, (EGLDisplay display, EGLContext context), EGL_TRUE, Handle(display),
         Handle(context))
ANSWERED(EGLBoolean, eglTerminate, (EGLDisplay display), EGL_TRUE, Handle(display))
ANSWERED(Function, eglGetProcAddress, (char const* name),
         (++recording_gl::addressLookups,
          std::strcmp(name, "glProgramBinaryOES") == 0 ? &glProgramBinaryOES : nullptr),
         name)
