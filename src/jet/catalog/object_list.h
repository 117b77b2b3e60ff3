#pragma once

#include "jet/catalog/owner_ids.h"
#include "jet/catalog/property_blob.h"
#include "jet/catalog/system_table.h"

#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace jet {

enum class ObjectType : std::int16_t {
    Table = 1,
    Database = 2,
    Container = 3, ///< what the others are children of
    OdbcLink = 4,  ///< a table in a database of another kind
    Query = 5,
    Link = 6,     ///< a table in another Access database
    Relation = 8, ///< one that is enforced or not
};

/// One object of the database: a row of MSysObjects.
struct CatalogObject {
    std::int32_t id = 0; ///< of a table: its definition page
    std::int32_t parent = 0;
    std::string name;
    ObjectType type = ObjectType::Table;
    std::uint32_t flags = 0;
    DateTime created, updated;
    RowId row;
    bool hasProperties = false;
};

/// MSysObjects and MSysACEs: the objects, their properties and their permissions. The objects are kept in memory, found
/// by name as the sort order compares, or by id.
class ObjectList {
public:
    explicit ObjectList(Pager& pager);

    [[nodiscard]] const CatalogObject* Find(std::int32_t parent, std::string_view name) const;
    [[nodiscard]] const CatalogObject* FindById(std::int32_t id) const;
    [[nodiscard]] std::vector<const CatalogObject*> ChildrenOf(std::int32_t parent) const;
    [[nodiscard]] std::size_t Count() const noexcept { return objects_.size(); }

    /// Adds an object, made now, with the permissions that its container hands down. Its name is free. Throws
    /// DatabaseFull.
    void Add(std::int32_t id, std::int32_t parent, std::string_view name, ObjectType type);
    /// The id that the next object without a page of its own gets.
    [[nodiscard]] std::int32_t NextSyntheticId() const;
    /// Removes the object and its permissions.
    void Remove(std::int32_t id);
    /// Its definition has changed now.
    void Touch(std::int32_t id);

    [[nodiscard]] PropertyBlob Properties(std::int32_t id);
    void SetProperties(std::int32_t id, const PropertyBlob& properties);

    /// To be called after pages have gone back to a savepoint.
    void Reread();

    [[nodiscard]] SystemTable& ObjectRows() noexcept { return table_; }
    [[nodiscard]] SystemTable& PermissionRows() noexcept { return aces_; }

private:
    /// Of an object in a container, as the container's inheritable rows have it.
    struct Permission {
        Bytes sid;
        std::int32_t rights = 0;
    };

    void Load();
    [[nodiscard]] CatalogObject& At(std::int32_t id);
    [[nodiscard]] std::string Key(std::int32_t parent, std::string_view name) const;
    [[nodiscard]] const std::vector<Permission>& PermissionsIn(std::int32_t container);
    void AddPermissions(std::int32_t id, const std::vector<Permission>& permissions);

    Pager* pager_;
    SystemTable table_;
    SystemTable aces_;
    OwnerIds owners_;
    std::map<std::uint32_t, CatalogObject> objects_; ///< by id
    std::unordered_map<std::string, std::uint32_t> ids_;
    std::map<std::int32_t, std::vector<Permission>> permissions_; ///< by container, once asked for
};

} // namespace jet
