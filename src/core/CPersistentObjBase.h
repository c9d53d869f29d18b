#pragma once

class DB_Archive;

// Base of every persistent class. Read and Write move the body only; the type id
// belongs to the archive.
class CPersistentObjBase {
public:
    virtual void Read(DB_Archive& archive) = 0;
    virtual void Write(DB_Archive& archive) = 0;
    virtual ~CPersistentObjBase() = default;
};
