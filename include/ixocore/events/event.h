#pragma once
// Events: what documents, scenes, selections, the graphics device, redraw requests and the
// host's idle time report through the application's event manager.
//
// An event is matched against the prototype a subscriber registered: events of the same type
// match, and events that carry a payload (the document, scene or selection that changes)
// match only prototypes carrying the same object.

#include <ixocore/core/api.h>
#include <ixocore/core/object.h>
#include <ixocore/core/object_ptr.h>

#include <type_traits>

class ixo_document;
class ixo_scene;
class ixo_selection;

// Base of all events. Abstract: concrete classes supply the type.
class IXO_API ixo_event : public ixo_object, public ixo_typified_object
{
public:
    // True when this event has the type of `prototype`. Payload events also require the
    // same payload object.
    virtual bool is_matching(ixo_object_ptr<ixo_event> prototype) const;

protected:
    ixo_event() = default;
    ~ixo_event() override;
};

// The host reports one whenever it is idle.
class IXO_API ixo_event_application_idle : public ixo_event
{
    IXO_TYPIFIED_DECLARE()

public:
    static ixo_object_ptr<ixo_event_application_idle> create();

private:
    ixo_event_application_idle() = default;
    ~ixo_event_application_idle() override;
};

// The graphics device reports it while it prepares a reset, after the application has
// released its device resources.
class IXO_API ixo_event_direct3d_resetting : public ixo_event
{
    IXO_TYPIFIED_DECLARE()

public:
    static ixo_object_ptr<ixo_event_direct3d_resetting> create();

private:
    ixo_event_direct3d_resetting() = default;
    ~ixo_event_direct3d_resetting() override;
};

// The graphics device reports it after a reset, once the application has rebuilt its
// device resources.
class IXO_API ixo_event_direct3d_reset : public ixo_event
{
    IXO_TYPIFIED_DECLARE()

public:
    static ixo_object_ptr<ixo_event_direct3d_reset> create();

private:
    ixo_event_direct3d_reset() = default;
    ~ixo_event_direct3d_reset() override;
};

// Asks every render view to repaint (see ixo_request_redraw).
class IXO_API ixo_event_request_redraw : public ixo_event
{
    IXO_TYPIFIED_DECLARE()

public:
    static ixo_object_ptr<ixo_event_request_redraw> create();

private:
    ixo_event_request_redraw() = default;
    ~ixo_event_request_redraw() override;
};

// Common part of the events that name the object that changes. The payload is held for the
// life of the event and used for matching only. Not an event class of its own: it has no
// type.
class IXO_API ixo_payload_event : public ixo_event
{
public:
    // Same type, and the prototype carries the same payload object (null matches null).
    bool is_matching(ixo_object_ptr<ixo_event> prototype) const override;

protected:
    explicit ixo_payload_event(ixo_object* payload);
    ~ixo_payload_event() override;

private:
    ixo_object_ptr<ixo_object> payload_;
};

// Reported by a document before add, remove and clear change its objects.
class IXO_API ixo_event_document_changing : public ixo_payload_event
{
    IXO_TYPIFIED_DECLARE()

public:
    static ixo_object_ptr<ixo_event_document_changing> create(ixo_object_ptr<ixo_document> doc);

private:
    explicit ixo_event_document_changing(ixo_object* doc) : ixo_payload_event(doc) {}
    ~ixo_event_document_changing() override;
};

// Reported by a document after add, remove and clear.
class IXO_API ixo_event_document_changed : public ixo_payload_event
{
    IXO_TYPIFIED_DECLARE()

public:
    static ixo_object_ptr<ixo_event_document_changed> create(ixo_object_ptr<ixo_document> doc);

private:
    explicit ixo_event_document_changed(ixo_object* doc) : ixo_payload_event(doc) {}
    ~ixo_event_document_changed() override;
};

// Reported by a scene graph before a child is added or removed.
class IXO_API ixo_event_scene_changing : public ixo_payload_event
{
    IXO_TYPIFIED_DECLARE()

public:
    // A template only so that ixo_scene need be complete where the event is created, not
    // here; `Scene` is always ixo_scene.
    template <typename Scene = ixo_scene>
    static ixo_object_ptr<ixo_event_scene_changing>
    create(std::type_identity_t<ixo_object_ptr<Scene>> scene)
    {
        return create_for(scene.get());
    }

private:
    static ixo_object_ptr<ixo_event_scene_changing> create_for(ixo_object* scene);
    explicit ixo_event_scene_changing(ixo_object* scene) : ixo_payload_event(scene) {}
    ~ixo_event_scene_changing() override;
};

// Reported by a scene graph after a child was added or removed.
class IXO_API ixo_event_scene_changed : public ixo_payload_event
{
    IXO_TYPIFIED_DECLARE()

public:
    // A template only so that ixo_scene need be complete where the event is created, not
    // here; `Scene` is always ixo_scene.
    template <typename Scene = ixo_scene>
    static ixo_object_ptr<ixo_event_scene_changed>
    create(std::type_identity_t<ixo_object_ptr<Scene>> scene)
    {
        return create_for(scene.get());
    }

private:
    static ixo_object_ptr<ixo_event_scene_changed> create_for(ixo_object* scene);
    explicit ixo_event_scene_changed(ixo_object* scene) : ixo_payload_event(scene) {}
    ~ixo_event_scene_changed() override;
};

// Reported by a selection before add_object, remove_object and remove_all change it.
class IXO_API ixo_event_selection_changing : public ixo_payload_event
{
    IXO_TYPIFIED_DECLARE()

public:
    static ixo_object_ptr<ixo_event_selection_changing>
    create(ixo_object_ptr<ixo_selection> selection);

private:
    explicit ixo_event_selection_changing(ixo_object* selection) : ixo_payload_event(selection) {}
    ~ixo_event_selection_changing() override;
};

// Reported by a selection after add_object, remove_object and remove_all.
class IXO_API ixo_event_selection_changed : public ixo_payload_event
{
    IXO_TYPIFIED_DECLARE()

public:
    static ixo_object_ptr<ixo_event_selection_changed>
    create(ixo_object_ptr<ixo_selection> selection);

private:
    explicit ixo_event_selection_changed(ixo_object* selection) : ixo_payload_event(selection) {}
    ~ixo_event_selection_changed() override;
};
