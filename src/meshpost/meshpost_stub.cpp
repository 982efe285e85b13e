#include "meshpost/meshpost.h"

// TEMPORARY: UV unwrapping and Draco compression are not built yet; both leave the scene as it is.
void UnwrapScene(Scene& /*scene*/, float /*texelsPerMeter*/) {}
void CompressScene(Scene& /*scene*/, const DracoOptions& /*options*/) {}
