#pragma once

class C3DFunction;

// Gives an importer access to a path while it feeds in key positions.
class SP_3DFunctionAccessor {
public:
    explicit SP_3DFunctionAccessor(C3DFunction* path) : function(path) {}
    virtual ~SP_3DFunctionAccessor() = default;

    C3DFunction* function;
};
