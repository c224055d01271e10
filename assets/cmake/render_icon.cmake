# Renders one compiled-in image and writes the C++ source that holds its PNG bytes.
# Run as a script: cmake -DSOURCE=... -DNAME=... -DTHEME=Dark|Light|Shared -DFRAMES=n -DSCALE=s
#   -DWIDTH=pt -DHEIGHT=pt -DBACK=none|states|always -DRSVG=rsvg-convert -DOUT_DIR=dir -P render_icon.cmake
#
# The source is an SVG whose viewBox is one frame in points; its colours are @NAME@ placeholders
# (palette.cmake). The strip is composed as one SVG with the frames side by side, each frame with its
# own colours, then rendered at SCALE pixels per point.

cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/palette.cmake)

foreach(arg SOURCE NAME THEME FRAMES SCALE WIDTH HEIGHT BACK RSVG OUT_DIR)
  if(NOT DEFINED ${arg})
    message(FATAL_ERROR "render_icon: ${arg} is not set")
  endif()
endforeach()

# The states, left to right, for each frame count.
if(FRAMES EQUAL 4)
  set(states normal hover pressed disabled)
elseif(FRAMES EQUAL 3)
  set(states normal hover pressed)
elseif(FRAMES EQUAL 2)
  set(states off on)
elseif(FRAMES EQUAL 1)
  set(states normal)
else()
  message(FATAL_ERROR "render_icon: ${NAME}: ${FRAMES} frames is not a known strip")
endif()

file(READ ${SOURCE} svg)
# The body is everything inside the outer <svg> element.
string(FIND "${svg}" "<svg" open)
string(FIND "${svg}" "</svg>" close REVERSE)
if(open LESS 0 OR close LESS 0)
  message(FATAL_ERROR "render_icon: ${SOURCE} is not an SVG document")
endif()
string(SUBSTRING "${svg}" ${open} -1 svg)
string(FIND "${svg}" ">" tag_end)
math(EXPR body_start "${tag_end} + 1")
math(EXPR body_length "${close} - ${open} - ${body_start}")
string(SUBSTRING "${svg}" ${body_start} ${body_length} body)

math(EXPR strip_width "${WIDTH} * ${FRAMES}")
# Pixel size of the whole strip; SCALE may be fractional in principle, the sizes must not be.
math(EXPR px_width "${strip_width} * ${SCALE}")
math(EXPR px_height "${HEIGHT} * ${SCALE}")

# Plate geometry: a rounded square inset by one point, or a disc for buttons floating over images.
math(EXPR plate_w "${WIDTH} - 2")
math(EXPR plate_h "${HEIGHT} - 2")
math(EXPR plate_rx "${WIDTH} * 18 / 100")
math(EXPR half_w "${WIDTH} / 2")
math(EXPR half_h "${HEIGHT} / 2")

set(out "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"${px_width}\" height=\"${px_height}\" viewBox=\"0 0 ${strip_width} ${HEIGHT}\">\n")
set(index 0)
foreach(state IN LISTS states)
  set(palette_state ${state})
  if(state STREQUAL "disabled")
    set(palette_state normal)
  endif()
  icon_palette(${THEME} ${palette_state})
  # Element ids must stay unique across frames.
  set(P "f${index}_")
  string(CONFIGURE "${body}" frame_body @ONLY)

  math(EXPR x "${index} * ${WIDTH}")
  set(group_attributes "transform=\"translate(${x} 0)\"")
  if(state STREQUAL "disabled")
    string(APPEND group_attributes " opacity=\"0.4\"")
  endif()
  string(APPEND out "<g ${group_attributes}>\n")
  if(BACK STREQUAL "states" AND PLATE_OPACITY)
    string(APPEND out "<rect x=\"1\" y=\"1\" width=\"${plate_w}\" height=\"${plate_h}\" rx=\"${plate_rx}\" fill=\"${PLATE}\"/>\n")
  elseif(BACK STREQUAL "always")
    set(disc ${PLATE})
    if(state STREQUAL "normal")
      set(disc ${PANEL})
    endif()
    string(APPEND out "<circle cx=\"${half_w}\" cy=\"${half_h}\" r=\"${half_w}\" fill=\"${disc}\" fill-opacity=\"0.82\"/>\n")
  endif()
  string(APPEND out "${frame_body}\n</g>\n")
  math(EXPR index "${index} + 1")
endforeach()
string(APPEND out "</svg>\n")

set(svg_out ${OUT_DIR}/svg/${NAME}.svg)
set(png_out ${OUT_DIR}/png/${NAME}.png)
file(WRITE ${svg_out} "${out}")
execute_process(COMMAND ${RSVG} --format=png -o ${png_out} ${svg_out}
  RESULT_VARIABLE result ERROR_VARIABLE errors)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "render_icon: ${RSVG} failed on ${svg_out}: ${errors}")
endif()

# The bytes as a C array, sixteen to a line.
file(READ ${png_out} hex HEX)
string(LENGTH "${hex}" hex_length)
math(EXPR byte_count "${hex_length} / 2")
string(REGEX REPLACE "([0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f])"
  "\\1\n" hex "${hex}")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")

file(WRITE ${OUT_DIR}/src/${NAME}.cpp.tmp
"// Generated from assets/icons/${SOURCE_NAME}.svg (${THEME}); do not edit.
#include \"assets/icons.h\"

namespace {
const unsigned char png_bytes[${byte_count}] = {
${bytes}};
} // namespace

const quillo::embedded_image ${NAME} = {png_bytes, sizeof png_bytes, ${FRAMES}, ${SCALE}.0f};
")
# Leave an unchanged source alone so that nothing recompiles after a touch of the SVG alone.
file(COPY_FILE ${OUT_DIR}/src/${NAME}.cpp.tmp ${OUT_DIR}/src/${NAME}.cpp ONLY_IF_DIFFERENT)
file(REMOVE ${OUT_DIR}/src/${NAME}.cpp.tmp)
