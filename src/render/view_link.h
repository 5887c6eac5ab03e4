#pragma once
// The render view as the drawing code of scenes sees it. Builds that do not contain the
// render views still hand draw records around; such a record never names a view.

#include <ixocore/core/object.h>

#if __has_include(<ixocore/render/render_view.h>)
#include <ixocore/render/camera_view.h>
#include <ixocore/render/render_view.h>
#define IXO_HAS_RENDER_VIEW 1
#else
class ixo_render_view : public ixo_object
{
};
#define IXO_HAS_RENDER_VIEW 0
#endif
