#!/usr/bin/env bash
# Shows the tool at work on the project's own sample files.
set -euo pipefail
vurl="$1"
echo "\$ vurl --version"
"$vurl" --version
echo "\$ vurl --help"
"$vurl" --help

# glTF input: the project's generated sample (textured, skinned, morph-animated) converted
# to every JSON output, then the manifest.
gltf_bin="$(cd "$(dirname "$vurl")" && pwd)"
gltf_demo="out/demo-gltf"
rm -rf "$gltf_demo"
mkdir -p "$gltf_demo"
"$gltf_bin/vurl_make_sample_glb" "$gltf_demo/sample.glb"
echo "\$ vurl -i sample.glb -m sample.json -r sample_materials.json -a sample_anim.json -d sample_meta.json -g sample_scene.json -n sample_manifest.json"
(cd "$gltf_demo" && "$gltf_bin/$(basename "$vurl")" -i sample.glb -m sample.json -r sample_materials.json \
  -a sample_anim.json -d sample_meta.json -g sample_scene.json -n sample_manifest.json)
echo "\$ cat sample_manifest.json"
cat "$gltf_demo/sample_manifest.json"
echo
echo "\$ vurl -i sample.glb -o sample_draco.glb -g sample_draco_scene.json -u true -C draco"
(cd "$gltf_demo" && "$gltf_bin/$(basename "$vurl")" -i sample.glb -o sample_draco.glb -g sample_draco_scene.json -u true -C draco)

# FBX input: the project's sample avatar source (a rig, geo_GRP with head_GRP and a head mesh
# whose blend-shape channels carry ai_* names, two takes, in centimetres) converted to every
# JSON output with the manifest, then to one GLB with the model and all takes.
fbx_demo="out/demo-fbx"
rm -rf "$fbx_demo"
mkdir -p "$fbx_demo"
"$gltf_bin/vurl_make_sample_fbx" "$fbx_demo/avatar.fbx"
echo "\$ vurl -i avatar.fbx -m avatar.json -r avatar_materials.json -a avatar_anim.json -d avatar_meta.json -g avatar_scene.json -n avatar_manifest.json"
(cd "$fbx_demo" && "$gltf_bin/$(basename "$vurl")" -i avatar.fbx -m avatar.json -r avatar_materials.json \
  -a avatar_anim.json -d avatar_meta.json -g avatar_scene.json -n avatar_manifest.json)
echo "\$ cat avatar_manifest.json"
cat "$fbx_demo/avatar_manifest.json"
echo
echo "\$ vurl -i avatar.fbx -o avatar.glb"
(cd "$fbx_demo" && "$gltf_bin/$(basename "$vurl")" -i avatar.fbx -o avatar.glb)
