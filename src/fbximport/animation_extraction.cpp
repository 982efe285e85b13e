#include "fbximport/animation_extraction.h"

// TEMPORARY: animation extraction and the morph weight transfer are not built yet; an FBX
// load yields no Animation and the slots carry no Morph.
void ExtractAnimations(FbxScene* /*fbxScene*/, Scene& /*scene*/, const ConversionOptions& /*options*/,
                       const SscNodes& /*sscNodes*/, const GroupNodes& /*groupNodes*/) {}
