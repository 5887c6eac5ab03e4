#pragma once
// ixo_application: the process-wide root of the library. Created by the first start and
// destroyed by the end that balances the last start; owns the documents and the
// application-wide services.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/platform/win32.h>

#include <set>

class ixo_direct3d;
class ixo_document;
class ixo_event_manager;
class ixo_render_view_manager;
class ixo_resource_manager;

// The result of start: the outcome of creating the graphics device.
enum ixo_start_code : int
{
    ixo_start_success = 0,
    ixo_start_no_adapter = 1,  // no display adapter passes the checks
    ixo_start_no_direct3d = 2, // the Direct3D object could not be created
    ixo_start_no_device = 3,   // the device could not be created
    ixo_start_no_font = 4,     // the font could not be created
    ixo_start_no_line = 5,     // the line drawer could not be created
    ixo_start_no_sprite = 6,   // the sprite drawer could not be created
    ixo_start_no_effect = 7,   // the effect could not be created
};

class IXO_API ixo_application
{
public:
    ixo_application(ixo_application const&) = delete;
    ixo_application& operator=(ixo_application const&) = delete;

    // The first call creates the application and its services for the host window `window`
    // (null: headless) and answers the device's start code; the application stays also when
    // that code reports a failure. Later calls only count and answer ixo_start_success.
    static ixo_start_code start(HWND window);
    // Balances one start; the end that balances the first start destroys the application.
    // Without a start it does nothing.
    static void end();
    // The current application, or null while the library is not started.
    static ixo_application* instance();

    // A new, empty document, kept until remove_document.
    virtual ixo_object_ptr<ixo_document> create_document();
    // Forgets `doc`; true when it was one of the application's documents. The document
    // lives on while others hold it.
    virtual bool remove_document(ixo_object_ptr<ixo_document> doc);
    // Device resources of every document's scene and of the render views are released before
    // a device reset and rebuilt after it. Called by the graphics device.
    virtual void pre_reset();
    virtual void post_reset();
    // The application's event manager (a new reference).
    virtual ixo_object_ptr<ixo_event_manager> get_event_manager();
    // The application's render-view manager (a new reference).
    virtual ixo_object_ptr<ixo_render_view_manager> get_render_view_manager();
    // The application's resource manager (a new reference).
    virtual ixo_object_ptr<ixo_resource_manager> get_resource_manager();
    // The graphics device (a new reference); null when its creation failed.
    virtual ixo_object_ptr<ixo_direct3d> get_direct3d();

private:
    ixo_application();
    virtual ~ixo_application();

    static ixo_application* m_instance;

    // Ordered by address, not by creation.
    std::set<ixo_object_ptr<ixo_document>> documents_;
    ixo_object_ptr<ixo_event_manager> event_manager_;
    ixo_object_ptr<ixo_render_view_manager> render_view_manager_;
    ixo_object_ptr<ixo_resource_manager> resource_manager_;
    ixo_object_ptr<ixo_direct3d> direct3d_;
    int start_count_ = 0;
};
