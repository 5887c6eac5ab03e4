#pragma once
// ixo_doc_indexed_mesh: the document object that owns an indexed mesh and the scene object
// that draws it. Adding it to a document hangs the scene object under the root of the
// document's scene; removing it takes the scene object away again.

#include <ixocore/app/document_object.h>
#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/mesh/indexed_mesh.h>
#include <ixocore/mesh/scene_indexed_mesh.h>

class ixo_document;

class IXO_API ixo_doc_indexed_mesh : public ixo_document_object
{
    IXO_TYPIFIED_DECLARE()

public:
    // The document object for `mesh`, with a new scene object over the same mesh.
    static ixo_object_ptr<ixo_doc_indexed_mesh> create(ixo_object_ptr<ixo_indexed_mesh> mesh);

    ixo_object_ptr<ixo_indexed_mesh> get_mesh() const;
    ixo_object_ptr<ixo_scene_indexed_mesh> get_scene_object() const;

    // Adds the scene object as a child of the root of `doc`'s scene (nothing for a null
    // document or a document without scene).
    void on_add(ixo_object_ptr<ixo_document> doc) override;
    // Removes the scene object from that root.
    void on_remove(ixo_object_ptr<ixo_document> doc) override;

    ixo_doc_indexed_mesh& operator=(const ixo_doc_indexed_mesh& other);

protected:
    explicit ixo_doc_indexed_mesh(ixo_object_ptr<ixo_indexed_mesh> mesh);
    // Shares the mesh and the scene object of `other`.
    ixo_doc_indexed_mesh(const ixo_doc_indexed_mesh& other);
    ~ixo_doc_indexed_mesh() override;

private:
    ixo_object_ptr<ixo_indexed_mesh> mesh_;
    ixo_object_ptr<ixo_scene_indexed_mesh> scene_object_;
};
