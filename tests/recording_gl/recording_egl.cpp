// The EGL functions that the plug-in uses.
#include <EGL/egl.h>
#include <GLES2/gl2.h>

#include <cstring>

#include "tests/recording_gl/recorder.h"

using recording_gl::Record;

namespace {

// Tests use small numbers as handles; the log shows them.
long Handle(void* handle) {
    return static_cast<long>(reinterpret_cast<intptr_t>(handle));
}

}  // namespace

extern "C" {

void glProgramBinaryOES(GLuint program, GLenum format, void const* binary, GLint length);

EGLBoolean eglMakeCurrent(EGLDisplay display, EGLSurface draw, EGLSurface read, EGLContext context) {
    Record("eglMakeCurrent", Handle(display), Handle(draw), Handle(read), Handle(context));
    return EGL_TRUE;
}

EGLBoolean eglDestroySurface(EGLDisplay display, EGLSurface surface) {
    Record("eglDestroySurface", Handle(display), Handle(surface));
    return EGL_TRUE;
}

EGLBoolean eglDestroyContext(EGLDisplay display, EGLContext context) {
    Record("eglDestroyContext", Handle(display), Handle(context));
    return EGL_TRUE;
}

EGLBoolean eglTerminate(EGLDisplay display) {
    Record("eglTerminate", Handle(display));
    return EGL_TRUE;
}

__eglMustCastToProperFunctionPointerType eglGetProcAddress(char const* name) {
    Record("eglGetProcAddress", name);
    recording_gl::CountAddressLookup();
    if (std::strcmp(name, "glProgramBinaryOES") != 0) {
        return nullptr;
    }
    return reinterpret_cast<__eglMustCastToProperFunctionPointerType>(&glProgramBinaryOES);
}

}  // extern "C"
