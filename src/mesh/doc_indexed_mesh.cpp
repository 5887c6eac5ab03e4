// Document object of an indexed mesh.

#include <ixocore/mesh/doc_indexed_mesh.h>

#include <ixocore/app/document.h>
#include <ixocore/scene/scene.h>

IXO_TYPIFIED_DEFINE(ixo_doc_indexed_mesh, IXO_TEXT("Indexed Mesh Document Object"))

ixo_doc_indexed_mesh::ixo_doc_indexed_mesh(ixo_object_ptr<ixo_indexed_mesh> mesh)
    : mesh_(mesh), scene_object_(ixo_scene_indexed_mesh::create(mesh))
{
}

ixo_doc_indexed_mesh::ixo_doc_indexed_mesh(const ixo_doc_indexed_mesh& other)
    : ixo_document_object(other), mesh_(other.mesh_), scene_object_(other.scene_object_)
{
}

ixo_doc_indexed_mesh& ixo_doc_indexed_mesh::operator=(const ixo_doc_indexed_mesh& other)
{
    ixo_document_object::operator=(other);
    mesh_ = other.mesh_;
    scene_object_ = other.scene_object_;
    return *this;
}

ixo_doc_indexed_mesh::~ixo_doc_indexed_mesh() = default;

ixo_object_ptr<ixo_doc_indexed_mesh>
ixo_doc_indexed_mesh::create(ixo_object_ptr<ixo_indexed_mesh> mesh)
{
    return ixo_object_ptr<ixo_doc_indexed_mesh>(new ixo_doc_indexed_mesh(std::move(mesh)));
}

ixo_object_ptr<ixo_indexed_mesh> ixo_doc_indexed_mesh::get_mesh() const
{
    return mesh_;
}

ixo_object_ptr<ixo_scene_indexed_mesh> ixo_doc_indexed_mesh::get_scene_object() const
{
    return scene_object_;
}

void ixo_doc_indexed_mesh::on_add(ixo_object_ptr<ixo_document> doc)
{
    if (!doc)
        return;
    ixo_object_ptr<ixo_scene> scene = doc->get_scene();
    if (!scene || !scene->get_root())
        return;
    scene->get_root()->add_child(scene_object_);
}

void ixo_doc_indexed_mesh::on_remove(ixo_object_ptr<ixo_document> doc)
{
    if (!doc)
        return;
    ixo_object_ptr<ixo_scene> scene = doc->get_scene();
    if (!scene || !scene->get_root())
        return;
    scene->get_root()->remove_child(scene_object_);
}
