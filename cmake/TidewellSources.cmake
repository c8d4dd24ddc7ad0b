# tidewell_sources(VAR DIR...): every .cpp/.c/.S file directly inside the given
# folders, re-globbed at build time so that a new file needs no list edit.
function(tidewell_sources var)
  set(found)
  foreach(dir ${ARGN})
    file(GLOB files CONFIGURE_DEPENDS
      ${dir}/*.cpp ${dir}/*.c ${dir}/*.S)
    list(APPEND found ${files})
  endforeach()
  list(SORT found)
  set(${var} ${found} PARENT_SCOPE)
endfunction()
