#include "renderbackend/RenderBackend.h"

#include "renderbackend/Canvas.h"
#include "renderbackend/RenderContext.h"

// The key functions of the plain interfaces: their virtual tables and type information live in this library.
RenderBackend::~RenderBackend() = default;
RenderContext::~RenderContext() = default;
Canvas::~Canvas() = default;
