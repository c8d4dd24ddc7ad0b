# Sourced. kernel_modules TREE INTO NAME...: copies each named kernel module
# of the module folder TREE into the folder INTO (uncompressed), each after
# the modules it depends on, and prints their file names in that load order.
# A module without a file of its own is built into the kernel.
kernel_modules() {
  local tree=$1 into=$2 name
  shift 2
  declare -A copied=()
  _kernel_module() {
    local name=$1 file dependency
    [[ -n ${copied[$name]:-} ]] && return 0
    copied[$name]=1
    file=$(find "$tree/kernel" -name "$name.ko" -o -name "$name.ko.xz" | head -n 1)
    [[ -z $file ]] && return 0
    for dependency in $(modinfo -F depends "$file" | tr ',' ' '); do
      _kernel_module "$dependency"
    done
    case $file in
      *.xz) xz -dc "$file" >"$into/$name.ko" ;;
      *) cp "$file" "$into/$name.ko" ;;
    esac
    echo "$name.ko"
  }
  for name in "$@"; do
    _kernel_module "$name"
  done
}
