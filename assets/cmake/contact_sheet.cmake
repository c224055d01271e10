# Draws every compiled-in image, all frames, at two pixels per point: the Dark images on the dark panel,
# the Light images on the light panel, then a mock of the popup's top bar in both themes, at two and
# at one pixel per point.
# Run as a script: cmake -DMANIFEST=icons.txt -DPNG_DIR=dir -DRSVG=rsvg-convert -DOUT=sheet.png -P ...

cmake_minimum_required(VERSION 3.25)

set(zoom 2)
set(row_gap 14)
set(label_width 210)
set(panel_width 260)
set(dark_panel "#262626")
set(light_panel "#ececec")

file(STRINGS ${MANIFEST} lines REGEX "^[A-Za-z]")
set(rows "")
set(y 40)
foreach(line IN LISTS lines)
  separate_arguments(f UNIX_COMMAND "${line}")
  list(GET f 0 name)
  list(GET f 1 frames)
  list(GET f 3 width)
  list(GET f 4 height)
  list(GET f 5 themes)
  math(EXPR w "${width} * ${frames} * ${zoom}")
  math(EXPR h "${height} * ${zoom}")
  if(themes STREQUAL "themed")
    set(dark ${name}Dark)
    set(light ${name}Light)
  else()
    set(dark ${name})
    set(light ${name})
  endif()
  math(EXPR text_y "${y} + ${h} / 2 + 5")
  math(EXPR x_dark "${label_width} + 10")
  math(EXPR x_light "${label_width} + ${panel_width} + 30")
  string(APPEND rows
    "<text x=\"12\" y=\"${text_y}\" class=\"label\">${name}</text>\n"
    "<image x=\"${x_dark}\" y=\"${y}\" width=\"${w}\" height=\"${h}\" href=\"png/${dark}.png\"/>\n"
    "<image x=\"${x_light}\" y=\"${y}\" width=\"${w}\" height=\"${h}\" href=\"png/${light}.png\"/>\n")
  math(EXPR y "${y} + ${h} + ${row_gap}")
endforeach()

# The popup's top bar in search mode (397 points wide), normal frames only.
function(bar theme panel field fieldborder text x0 y0 bar_zoom out)
  set(s "<g transform=\"translate(${x0} ${y0}) scale(${bar_zoom})\">\n")
  string(APPEND s "<rect width=\"397\" height=\"45\" fill=\"${panel}\"/>\n")
  string(APPEND s "<svg x=\"10\" y=\"8\" width=\"30\" height=\"30\" viewBox=\"0 0 30 30\"><image width=\"30\" height=\"30\" href=\"png/SearchIcon${theme}.png\"/></svg>\n")
  string(APPEND s "<rect x=\"51.5\" y=\"8.5\" width=\"115\" height=\"29\" rx=\"3\" fill=\"${field}\" stroke=\"${fieldborder}\"/>\n")
  string(APPEND s "<text x=\"58\" y=\"27\" font-family=\"DejaVu Sans\" font-size=\"12\" fill=\"${text}\">blur</text>\n")
  set(i 0)
  foreach(icon Screenshot Gallery Export Pref Logo)
    math(EXPR bx "397 - 209 + ${i} * 43")
    set(frames 3)
    if(icon STREQUAL "Screenshot")
      set(frames 4)
    endif()
    math(EXPR sw "28 * ${frames}")
    string(APPEND s "<svg x=\"${bx}\" y=\"8\" width=\"28\" height=\"28\" viewBox=\"0 0 28 28\"><image width=\"${sw}\" height=\"28\" href=\"png/${icon}Icon${theme}.png\"/></svg>\n")
    math(EXPR i "${i} + 1")
  endforeach()
  string(APPEND s "<image x=\"378\" y=\"1\" width=\"18\" height=\"18\" href=\"png/NewsIcon.png\"/>\n")
  string(APPEND s "<text x=\"387\" y=\"14\" text-anchor=\"middle\" font-family=\"DejaVu Sans\" font-weight=\"bold\" font-size=\"10\" fill=\"#ffffff\">3</text>\n")
  string(APPEND s "</g>\n")
  set(${out} "${s}" PARENT_SCOPE)
endfunction()

math(EXPR bar_y "${y} + 10")
bar(Dark ${dark_panel} "#1b1b1b" "#3c3c3c" "#d8d8d8" 10 ${bar_y} ${zoom} dark_bar)
math(EXPR bar_y2 "${bar_y} + 45 * ${zoom} + 10")
bar(Light ${light_panel} "#ffffff" "#b4b4b4" "#202020" 10 ${bar_y2} ${zoom} light_bar)
# The same at one pixel per point, as on a low-density screen.
math(EXPR bar_y3 "${bar_y2} + 45 * ${zoom} + 10")
bar(Dark ${dark_panel} "#1b1b1b" "#3c3c3c" "#d8d8d8" 10 ${bar_y3} 1 dark_bar_1x)
bar(Light ${light_panel} "#ffffff" "#b4b4b4" "#202020" 417 ${bar_y3} 1 light_bar_1x)
string(APPEND light_bar "${dark_bar_1x}${light_bar_1x}")
math(EXPR total_height "${bar_y3} + 45 + 10")
math(EXPR total_width "${label_width} + 2 * ${panel_width} + 40")
math(EXPR bars_width "397 * ${zoom} + 20")
if(bars_width LESS 834)
  set(bars_width 834)
endif()
if(bars_width GREATER total_width)
  set(total_width ${bars_width})
endif()
math(EXPR dark_x "${label_width}")
math(EXPR light_x "${label_width} + ${panel_width} + 20")
math(EXPR panel_height "${bar_y} - 30")

file(WRITE ${PNG_DIR}/../contact_sheet.svg
"<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"${total_width}\" height=\"${total_height}\">
<style>.label { font-family: DejaVu Sans; font-size: 13px; fill: #202020; }
.head { font-family: DejaVu Sans; font-size: 14px; font-weight: bold; fill: #202020; }</style>
<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>
<rect x=\"${dark_x}\" y=\"30\" width=\"${panel_width}\" height=\"${panel_height}\" fill=\"${dark_panel}\"/>
<rect x=\"${light_x}\" y=\"30\" width=\"${panel_width}\" height=\"${panel_height}\" fill=\"${light_panel}\"/>
<text x=\"${dark_x}\" y=\"20\" class=\"head\">Dark</text>
<text x=\"${light_x}\" y=\"20\" class=\"head\">Light</text>
${rows}${dark_bar}${light_bar}</svg>
")
execute_process(COMMAND ${RSVG} --format=png -o ${OUT} ${PNG_DIR}/../contact_sheet.svg
  RESULT_VARIABLE result ERROR_VARIABLE errors)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "contact_sheet: ${errors}")
endif()
