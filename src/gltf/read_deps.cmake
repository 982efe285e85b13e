# The reading side parses the JSON chunk with RapidJSON (header-only) and decodes
# KHR_draco_mesh_compression primitives with Draco.
find_package(draco REQUIRED CONFIG)
find_path(VURL_RAPIDJSON_INCLUDE rapidjson/document.h REQUIRED)
target_include_directories(vurl_gltf SYSTEM PUBLIC ${VURL_RAPIDJSON_INCLUDE})
target_link_libraries(vurl_gltf PUBLIC draco::draco)
