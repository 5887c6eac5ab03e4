#include <ixocore/events/event.h>

#include <ixocore/app/document.h>
#include <ixocore/core/string.h>
#include <ixocore/scene/selection.h>

IXO_TYPIFIED_DEFINE(ixo_event_application_idle, IXO_TEXT("Application Idle Event"))
IXO_TYPIFIED_DEFINE(ixo_event_direct3d_resetting, IXO_TEXT("Direct3D Resetting Event"))
IXO_TYPIFIED_DEFINE(ixo_event_direct3d_reset, IXO_TEXT("Direct3D Reset Event"))
IXO_TYPIFIED_DEFINE(ixo_event_request_redraw, IXO_TEXT("Request Redraw Event"))
IXO_TYPIFIED_DEFINE(ixo_event_document_changing, IXO_TEXT("Document Changing Event"))
IXO_TYPIFIED_DEFINE(ixo_event_document_changed, IXO_TEXT("Document Changed Event"))
IXO_TYPIFIED_DEFINE(ixo_event_scene_changing, IXO_TEXT("Scene Changing Event"))
IXO_TYPIFIED_DEFINE(ixo_event_scene_changed, IXO_TEXT("Scene Changed Event"))
IXO_TYPIFIED_DEFINE(ixo_event_selection_changing, IXO_TEXT("Selection Changing Event"))
IXO_TYPIFIED_DEFINE(ixo_event_selection_changed, IXO_TEXT("Selection Changed Event"))

ixo_event::~ixo_event() = default;

bool ixo_event::is_matching(ixo_object_ptr<ixo_event> prototype) const
{
    return prototype && type() == prototype->type();
}

// ---------------------------------------------------------------------------------------
ixo_event_application_idle::~ixo_event_application_idle() = default;
ixo_event_direct3d_resetting::~ixo_event_direct3d_resetting() = default;
ixo_event_direct3d_reset::~ixo_event_direct3d_reset() = default;
ixo_event_request_redraw::~ixo_event_request_redraw() = default;

ixo_object_ptr<ixo_event_application_idle> ixo_event_application_idle::create()
{
    return new ixo_event_application_idle;
}

ixo_object_ptr<ixo_event_direct3d_resetting> ixo_event_direct3d_resetting::create()
{
    return new ixo_event_direct3d_resetting;
}

ixo_object_ptr<ixo_event_direct3d_reset> ixo_event_direct3d_reset::create()
{
    return new ixo_event_direct3d_reset;
}

ixo_object_ptr<ixo_event_request_redraw> ixo_event_request_redraw::create()
{
    return new ixo_event_request_redraw;
}

// ---------------------------------------------------------------------------------------
ixo_payload_event::ixo_payload_event(ixo_object* payload) : payload_(payload) {}

ixo_payload_event::~ixo_payload_event()
{
    payload_ = nullptr;
}

bool ixo_payload_event::is_matching(ixo_object_ptr<ixo_event> prototype) const
{
    if (!ixo_event::is_matching(prototype))
        return false;
    // Equal type numbers mean the same concrete class, and every class of that type derives
    // from this one.
    auto const* other = dynamic_cast<ixo_payload_event const*>(prototype.get());
    return other && other->payload_ == payload_;
}

ixo_event_document_changing::~ixo_event_document_changing() = default;
ixo_event_document_changed::~ixo_event_document_changed() = default;
ixo_event_scene_changing::~ixo_event_scene_changing() = default;
ixo_event_scene_changed::~ixo_event_scene_changed() = default;
ixo_event_selection_changing::~ixo_event_selection_changing() = default;
ixo_event_selection_changed::~ixo_event_selection_changed() = default;

ixo_object_ptr<ixo_event_document_changing>
ixo_event_document_changing::create(ixo_object_ptr<ixo_document> doc)
{
    return new ixo_event_document_changing(doc.get());
}

ixo_object_ptr<ixo_event_document_changed>
ixo_event_document_changed::create(ixo_object_ptr<ixo_document> doc)
{
    return new ixo_event_document_changed(doc.get());
}

ixo_object_ptr<ixo_event_scene_changing> ixo_event_scene_changing::create_for(ixo_object* scene)
{
    return new ixo_event_scene_changing(scene);
}

ixo_object_ptr<ixo_event_scene_changed> ixo_event_scene_changed::create_for(ixo_object* scene)
{
    return new ixo_event_scene_changed(scene);
}

ixo_object_ptr<ixo_event_selection_changing>
ixo_event_selection_changing::create(ixo_object_ptr<ixo_selection> selection)
{
    return new ixo_event_selection_changing(selection.get());
}

ixo_object_ptr<ixo_event_selection_changed>
ixo_event_selection_changed::create(ixo_object_ptr<ixo_selection> selection)
{
    return new ixo_event_selection_changed(selection.get());
}
