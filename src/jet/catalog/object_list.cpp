#include "jet/catalog/object_list.h"

#include "jet/base/error.h"
#include "jet/catalog/names.h"
#include "jet/catalog/system_table.h"

#include <algorithm>

namespace jet {

using namespace objects_column;

ObjectList::ObjectList(Pager& pager)
    : pager_(&pager), table_(pager, kObjectsPage, "MSysObjects", kLvProp + 1),
      aces_(pager, kAcesPage, "MSysACEs", aces_column::kInheritable + 1), owners_(pager)
{
    Load();
}

void ObjectList::Reread()
{
    table_.Rows().Reread();
    aces_.Rows().Reread();
    objects_.clear();
    ids_.clear();
    permissions_.clear();
    Load();
}

void ObjectList::Load()
{
    // Access takes no notice of a table's properties inside the row.
    table_.Rows().SetNeverInline(table_.Position(kLvProp));
    Record record;
    Table& rows = table_.Rows();
    for (auto row = rows.NextRow(std::nullopt); row; row = rows.NextRow(row)) {
        rows.Read(*row, record);
        CatalogObject object;
        object.id = table_.Long(record, kId);
        object.parent = table_.Long(record, kParentId);
        object.name = table_.Text(record, kName);
        object.type = static_cast<ObjectType>(table_.Long(record, kType));
        object.flags = static_cast<std::uint32_t>(table_.Long(record, kFlags));
        object.created = table_.Date(record, kDateCreate);
        object.updated = table_.Date(record, kDateUpdate);
        object.row = *row;
        object.hasProperties = !table_.Binary(record, kLvProp).empty();
        // In a damaged file a name may stand twice: the first one has it.
        ids_.emplace(Key(object.parent, object.name), static_cast<std::uint32_t>(object.id));
        objects_.emplace(static_cast<std::uint32_t>(object.id), std::move(object));
    }
}

/// A name is unique among the children of one container only: a relation may be called like a table.
std::string ObjectList::Key(std::int32_t parent, std::string_view name) const
{
    std::array<Byte, 4> prefix{};
    StoreI32(prefix, 0, parent);
    return std::string(prefix.begin(), prefix.end()) + NameKey(pager_->GetFormat(), name);
}

const CatalogObject* ObjectList::Find(std::int32_t parent, std::string_view name) const
{
    const auto found = ids_.find(Key(parent, name));
    return found == ids_.end() ? nullptr : &objects_.at(found->second);
}

const CatalogObject* ObjectList::FindById(std::int32_t id) const
{
    const auto found = objects_.find(static_cast<std::uint32_t>(id));
    return found == objects_.end() ? nullptr : &found->second;
}

CatalogObject& ObjectList::At(std::int32_t id)
{
    return objects_.at(static_cast<std::uint32_t>(id));
}

std::vector<const CatalogObject*> ObjectList::ChildrenOf(std::int32_t parent) const
{
    std::vector<const CatalogObject*> children;
    for (const auto& [id, object] : objects_)
        if (object.parent == parent)
            children.push_back(&object);
    return children;
}

/// Objects that are no tables have ids of their own, with the top bit set, so that none is ever taken for a page.
std::int32_t ObjectList::NextSyntheticId() const
{
    const std::uint32_t last = objects_.empty() ? 0 : objects_.rbegin()->first;
    return static_cast<std::int32_t>(last < kFirstSyntheticId ? kFirstSyntheticId : last + 1);
}

/// What a container hands down to whatever is made in it: its inheritable entries, that of "whoever makes the object"
/// turned into one of the user. Read once: a run makes many tables in the same container.
const std::vector<ObjectList::Permission>& ObjectList::PermissionsIn(std::int32_t container)
{
    if (const auto known = permissions_.find(container); known != permissions_.end())
        return known->second;
    std::vector<Permission> permissions;
    Record record;
    for (const RowId row : aces_.RowsWith(aces_column::kObjectId, container)) {
        aces_.Rows().Read(row, record);
        if (!aces_.Boolean(record, aces_column::kInheritable))
            continue;
        Permission permission{aces_.Binary(record, aces_column::kSid), aces_.Long(record, aces_column::kAcm)};
        if (permission.sid == owners_.creator)
            permission.sid = owners_.admin;
        // The row of "whoever makes it" may have become a second one of the same user: their rights are joined.
        const auto same = std::ranges::find(permissions, permission.sid, &Permission::sid);
        if (same != permissions.end())
            same->rights |= permission.rights;
        else
            permissions.push_back(std::move(permission));
    }
    return permissions_.emplace(container, std::move(permissions)).first->second;
}

/// The rows of MSysACEs for a new object.
void ObjectList::AddPermissions(std::int32_t id, const std::vector<Permission>& permissions)
{
    for (const Permission& permission : permissions) {
        Record ace = aces_.Blank();
        aces_.Set(ace, aces_column::kObjectId, id);
        aces_.Set(ace, aces_column::kSid, permission.sid);
        aces_.Set(ace, aces_column::kAcm, permission.rights);
        aces_.Set(ace, aces_column::kInheritable, false);
        aces_.Rows().Insert(ace);
    }
}

void ObjectList::Add(std::int32_t id, std::int32_t parent, std::string_view name, ObjectType type)
{
    CatalogObject object;
    object.id = id;
    object.parent = parent;
    object.name = name;
    object.type = type;
    object.created = object.updated = pager_->System().LocalTime();

    Record record = table_.Blank();
    table_.Set(record, kId, object.id);
    table_.Set(record, kParentId, object.parent);
    table_.Set(record, kName, object.name);
    table_.Set(record, kType, static_cast<std::int32_t>(type));
    table_.Set(record, kDateCreate, object.created);
    table_.Set(record, kDateUpdate, object.updated);
    table_.Set(record, kOwner, owners_.admin);
    // No flag at all: an ordinary object, listed and not hidden.
    table_.Set(record, kFlags, std::int32_t{0});
    object.row = table_.Rows().Insert(record);
    AddPermissions(id, PermissionsIn(parent));
    ids_.emplace(Key(parent, name), static_cast<std::uint32_t>(id));
    objects_.emplace(static_cast<std::uint32_t>(id), std::move(object));
}

void ObjectList::Remove(std::int32_t id)
{
    const CatalogObject& object = At(id);
    table_.Rows().Delete(object.row);
    for (const RowId row : aces_.RowsWith(aces_column::kObjectId, id))
        aces_.Rows().Delete(row);
    ids_.erase(Key(object.parent, object.name));
    objects_.erase(static_cast<std::uint32_t>(id));
}

void ObjectList::Touch(std::int32_t id)
{
    CatalogObject& object = At(id);
    // Access shows this date beside the object's name.
    object.updated = pager_->System().LocalTime();
    if (table_.Overwrite(object.row, kDateUpdate, object.updated))
        return;
    Record record;
    table_.Rows().Read(object.row, record);
    table_.Set(record, kDateUpdate, object.updated);
    table_.Rows().Update(object.row, record);
}

PropertyBlob ObjectList::Properties(std::int32_t id)
{
    const CatalogObject& object = At(id);
    if (!object.hasProperties)
        return PropertyBlob(pager_->GetFormat());
    Record record;
    table_.Rows().Read(object.row, record);
    const Bytes blob = table_.Binary(record, kLvProp);
    try {
        return {pager_->GetFormat(), blob};
    } catch (const Error&) { // of one who does not know where the bytes stand
        throw CorruptPage(object.row.page, "the properties of [" + object.name + "] cannot be read");
    }
}

void ObjectList::SetProperties(std::int32_t id, const PropertyBlob& properties)
{
    CatalogObject& object = At(id);
    Record record;
    table_.Rows().Read(object.row, record);
    table_.Set(record, kLvProp, properties.IsEmpty() ? Value() : Value(properties.Serialize()));
    table_.Rows().Update(object.row, record);
    object.hasProperties = !properties.IsEmpty();
}

} // namespace jet
