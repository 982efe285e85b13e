#!/usr/bin/env bash
# Shows the tool at work on the project's own sample files.
set -euo pipefail
vurl="$1"
echo "\$ vurl --version"
"$vurl" --version
echo "\$ vurl --help"
"$vurl" --help

bin="$(cd "$(dirname "$vurl")" && pwd)"

# Runs the tool inside a demo folder: vurl_in DIR ARGS...
vurl_in() {
  local dir="$1"
  shift
  (cd "$dir" && "$bin/$(basename "$vurl")" "$@")
}

# Makes DIR afresh and writes the sample there with the named fixture writer.
fresh_sample() {
  local dir="$1" writer="$2" file="$3"
  rm -rf "$dir"
  mkdir -p "$dir"
  "$bin/$writer" "$dir/$file"
}

# Converts INPUT in DIR to every JSON output named after STEM, then shows the manifest.
convert_to_json() {
  local dir="$1" input="$2" stem="$3"
  echo "\$ vurl -i $input -m $stem.json -r ${stem}_materials.json -a ${stem}_anim.json -d ${stem}_meta.json -g ${stem}_scene.json -n ${stem}_manifest.json"
  vurl_in "$dir" -i "$input" -m "$stem.json" -r "${stem}_materials.json" \
    -a "${stem}_anim.json" -d "${stem}_meta.json" -g "${stem}_scene.json" -n "${stem}_manifest.json"
  echo "\$ cat ${stem}_manifest.json"
  cat "$dir/${stem}_manifest.json"
  echo
}

# glTF input: the project's generated sample (textured, skinned, morph-animated) converted
# to every JSON output, then the manifest.
gltf_demo="out/demo-gltf"
fresh_sample "$gltf_demo" vurl_make_sample_glb sample.glb
convert_to_json "$gltf_demo" sample.glb sample
echo "\$ vurl -i sample.glb -o sample_draco.glb -g sample_draco_scene.json -u true -C draco"
vurl_in "$gltf_demo" -i sample.glb -o sample_draco.glb -g sample_draco_scene.json -u true -C draco

# FBX input: the project's sample avatar source (a rig, geo_GRP with head_GRP and a head mesh
# whose blend-shape channels carry ai_* names, two takes, in centimetres) converted to every
# JSON output with the manifest, then to one GLB with the model and all takes.
fbx_demo="out/demo-fbx"
fresh_sample "$fbx_demo" vurl_make_sample_fbx avatar.fbx
convert_to_json "$fbx_demo" avatar.fbx avatar
echo "\$ vurl -i avatar.fbx -o avatar.glb"
vurl_in "$fbx_demo" -i avatar.fbx -o avatar.glb
