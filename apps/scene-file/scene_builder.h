#pragma once
// Builds a read scene file into the library's objects: the object tree and lights into a
// scene, the camera placement into a camera, a view's settings into a render view. Needs
// a started library.

#include "scene_file.h"

class ixo_camera_view;
class ixo_light;
class ixo_render_view;
class ixo_scene;
class ixo_scene_object;

namespace ixo_scene_file
{
// The described object with its children, transform, colour and properties.
ixo_object_ptr<ixo_scene_object> build_object(const object_desc& d);

// Adds the described objects under the scene's root and the lights to the scene (numbered
// from 1, after the head light), with shadow matrices fitted to the scene's bounds.
// Returns the lights.
std::vector<ixo_object_ptr<ixo_light>> build_scene(const scene_desc& d, ixo_scene& scene);

// Turns the camera to one of the standard views ("front", ..., "isometric"): eye at the
// origin, one unit from the focus; view all then backs the eye off. Unknown names leave
// the camera alone.
void apply_standard_view(ixo_camera_view& camera, const std::string& view);

// Places the camera as described, framing `scene` when the description asks for it, and
// fits near and far to the scene's bounds.
void apply_camera(ixo_camera_view& camera, const camera_desc& c, ixo_scene& scene);

// Background colour and picture, shadows (when the scene has lights) and camera of an
// initialised view. Returns false when the background picture cannot be read.
bool apply_view(ixo_render_view& view, const view_desc& v, ixo_scene& scene, bool has_lights);
} // namespace ixo_scene_file
