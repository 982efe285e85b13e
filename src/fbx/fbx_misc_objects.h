// Classes the program's result does not depend on: kept as objects with properties so
// that their connections stay valid.
#pragma once

#include "fbx/fbx_document.h"
#include "fbx/fbx_object.h"

#define FBX_PLAIN_CLASS(Class, Parent) \
    class Class : public Parent {      \
        FBX_OBJECT_DECLARE(Class, Parent) \
    };
FBX_PLAIN_CLASS(FbxContainer, FbxObject)
FBX_PLAIN_CLASS(FbxGenericNode, FbxObject)
FBX_PLAIN_CLASS(FbxConstraint, FbxObject)
FBX_PLAIN_CLASS(FbxControlSetPlug, FbxObject)
FBX_PLAIN_CLASS(FbxCache, FbxObject)
FBX_PLAIN_CLASS(FbxImplementation, FbxObject)
FBX_PLAIN_CLASS(FbxBindingTable, FbxObject)
FBX_PLAIN_CLASS(FbxBindingOperator, FbxObject)
FBX_PLAIN_CLASS(FbxSelectionNode, FbxObject)
FBX_PLAIN_CLASS(FbxSelectionSet, FbxCollection)
FBX_PLAIN_CLASS(FbxObjectMetaData, FbxObject)
FBX_PLAIN_CLASS(FbxAudioLayer, FbxCollection)
FBX_PLAIN_CLASS(FbxAudio, FbxObject)
FBX_PLAIN_CLASS(FbxSceneReference, FbxObject)
FBX_PLAIN_CLASS(FbxCharacterPose, FbxObject)
FBX_PLAIN_CLASS(FbxIOBase, FbxObject)
#undef FBX_PLAIN_CLASS
