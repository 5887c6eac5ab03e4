#pragma once
// The undoable camera commands: a standard axis-aligned view, view all (frame the whole
// scene) and view normal to a plane. Each remembers the camera state it replaced, so undo
// and redo exchange the two states; run them through the document's command manager.

#include <ixocore/app/command.h>
#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/math/plane.h>
#include <ixocore/math/vector.h>

#include <cstdint>

class ixo_camera_view;
class ixo_render_view;
class ixo_scene;

// Puts the camera's eye at the origin looking along one of the six axis directions, one
// unit from the focus; fov, near, far and the projection are kept, nothing is repainted
// (frame the scene with a view-all command afterwards).
class IXO_API ixo_standard_view_command : public ixo_command
{
public:
    // The values are what matters (0 to 5); each names the direction looked along.
    enum view_type : std::int32_t
    {
        front_view = 0,  // along -z, up +y
        right_view = 1,  // along -x, up +y
        top_view = 2,    // along -y, up -z
        back_view = 3,   // along +z, up +y
        left_view = 4,   // along +x, up +y
        bottom_view = 5, // along +y, up -z
    };

    // A command for `camera` (may be null: then it does nothing and answers true). A view
    // outside 0..5 leaves the camera's position as it is.
    static ixo_object_ptr<ixo_standard_view_command> create(view_type view,
                                                            ixo_object_ptr<ixo_camera_view> camera);

    // Saves eye, focus and up, then sets the standard view. Always true.
    bool execute() override;
    bool is_undoable() override;
    // Exchanges the saved eye, focus and up with the camera's: a second call restores
    // again. Always true.
    bool undo() override;
    // The same exchange as undo.
    bool redo() override;

    ixo_standard_view_command(const ixo_standard_view_command& other);
    ixo_standard_view_command& operator=(const ixo_standard_view_command& other);

private:
    ixo_standard_view_command(view_type view, ixo_object_ptr<ixo_camera_view> camera);
    ~ixo_standard_view_command() override;

    view_type view_;
    ixo_object_ptr<ixo_camera_view> camera_;
    ixo_vector3<float> saved_eye_{0.0f, 0.0f, 0.0f};
    ixo_vector3<float> saved_focus_{0.0f, 0.0f, 0.0f};
    ixo_vector3<float> saved_up_{0.0f, 0.0f, 0.0f};
};

// Frames the whole scene in the view's camera without changing the viewing direction:
// fov 30, focus at the middle of the scene's bounds, the eye backed off until the bounds
// fit, near and far fitted to the bounds; then repaints the view.
class IXO_API ixo_view_all_command : public ixo_command
{
public:
    // A command for `view` and `scene` (either may be null: then it does nothing).
    static ixo_object_ptr<ixo_view_all_command> create(ixo_object_ptr<ixo_render_view> view,
                                                       ixo_object_ptr<ixo_scene> scene);

    // Saves fov, eye, focus, up, near and far, then frames the scene's bounds and paints
    // the view. An empty bounding box changes nothing. Always true.
    bool execute() override;
    bool is_undoable() override;
    // Exchanges the saved camera state with the camera's and marks the scene for a full
    // update. Always true.
    bool undo() override;
    bool redo() override;

    ixo_view_all_command(const ixo_view_all_command& other);
    ixo_view_all_command& operator=(const ixo_view_all_command& other);

private:
    ixo_view_all_command(ixo_object_ptr<ixo_render_view> view, ixo_object_ptr<ixo_scene> scene);
    ~ixo_view_all_command() override;

    ixo_object_ptr<ixo_render_view> view_;
    ixo_object_ptr<ixo_scene> scene_;
    float saved_fov_ = 30.0f;
    ixo_vector3<float> saved_eye_{0.0f, 0.0f, 0.0f};
    ixo_vector3<float> saved_focus_{0.0f, 0.0f, 0.0f};
    ixo_vector3<float> saved_up_{0.0f, 0.0f, 0.0f};
    float saved_near_ = 0.0f;
    float saved_far_ = 0.0f;
};

// Looks straight at a plane: the focus goes to the plane's root, the eye along the
// plane's normal (its stored length scales the distance) far enough that the scene's
// extent on the plane fits a 30° field of view, up along the plane's v direction; near
// and far enclose the scene. Nothing is repainted.
class IXO_API ixo_view_normal_to_plane_command : public ixo_command
{
public:
    // A command for `camera`, `scene` and a copy of `plane` (camera or scene null: it does
    // nothing).
    static ixo_object_ptr<ixo_view_normal_to_plane_command>
    create(ixo_object_ptr<ixo_camera_view> camera, ixo_object_ptr<ixo_scene> scene,
           const ixo_plane<float>& plane);

    // Saves fov, eye, focus, up, near and far, then sets the view. A scene whose bounds
    // are empty leaves the camera as it is. Always true.
    bool execute() override;
    bool is_undoable() override;
    // Exchanges the saved camera state with the camera's. Always true.
    bool undo() override;
    bool redo() override;

    ixo_view_normal_to_plane_command(const ixo_view_normal_to_plane_command& other);
    ixo_view_normal_to_plane_command& operator=(const ixo_view_normal_to_plane_command& other);

private:
    ixo_view_normal_to_plane_command(ixo_object_ptr<ixo_camera_view> camera,
                                     ixo_object_ptr<ixo_scene> scene,
                                     const ixo_plane<float>& plane);
    ~ixo_view_normal_to_plane_command() override;

    ixo_object_ptr<ixo_camera_view> camera_;
    ixo_object_ptr<ixo_scene> scene_;
    ixo_plane<float> plane_;
    float saved_fov_ = 30.0f;
    ixo_vector3<float> saved_eye_{0.0f, 0.0f, 0.0f};
    ixo_vector3<float> saved_focus_{0.0f, 0.0f, 0.0f};
    ixo_vector3<float> saved_up_{0.0f, 0.0f, 0.0f};
    float saved_near_ = 0.0f;
    float saved_far_ = 0.0f;
};
