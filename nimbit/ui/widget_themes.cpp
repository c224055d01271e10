#include "nimbit/ui/widget_themes.h"

#include "nimbit/ui/event_manager.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/utils/assert.h"

#include <cstdint>
#include <iterator>
#include <utility>
#include <vector>

namespace nimbit::ui {

namespace {

// The built-in look: key, value, in the table's fixed order. Colours not named by a control's
// design follow the same dark scheme: near-black backs, mid-grey borders and lines, light text,
// blue for selection and focus. "default_back_color" is magenta so that a widget nobody styled
// shows at once. Image keys hold no picture: the application supplies its icons.
const std::pair<std::string_view, theme_style> default_table[] = {
    {theme_keys::default_back_color, vec4{1.0f, 0.0f, 1.0f, 1.0f}},
    {theme_keys::default_border_color, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::default_border_width, 1.0f},
    {theme_keys::checkbox_back_color, vec4{0.145f, 0.149f, 0.165f, 1.0f}},
    {theme_keys::checkbox_border_color_normal, vec4{0.294f, 0.294f, 0.294f, 1.0f}},
    {theme_keys::checkbox_border_color_hover, vec4{1.0f, 1.0f, 1.0f, 1.0f}},
    {theme_keys::checkbox_border_color_focus, vec4{0.255f, 0.584f, 0.753f, 1.0f}},
    {theme_keys::checkbox_border_width, 1.0f},
    {theme_keys::checkbox_font_name, "tahoma"},
    {theme_keys::checkbox_font_style, font_style::normal},
    {theme_keys::checkbox_font_weight, font_weight::regular},
    {theme_keys::checkbox_font_color, vec4{1.0f, 1.0f, 1.0f, 1.0f}},
    {theme_keys::checkbox_font_size, 12.0f},
    {theme_keys::checkbox_image, image_stream{}},
    {theme_keys::message_popup_back_color, vec4{0.114f, 0.118f, 0.133f, 1.0f}},
    {theme_keys::message_popup_font_name, "tahoma"},
    {theme_keys::message_popup_font_style, font_style::normal},
    {theme_keys::message_popup_font_weight, font_weight::regular},
    {theme_keys::message_popup_font_color, vec4{0.85f, 0.85f, 0.85f, 1.0f}},
    {theme_keys::message_popup_font_size, 12.0f},
    {theme_keys::message_popup_text_align, text_align::left},
    {theme_keys::message_popup_button_align, text_align::center},
    {theme_keys::message_popup_image, image_stream{}},
    {theme_keys::message_popup_window_margins, _vec2<int>{16, 12}},
    {theme_keys::message_popup_component_margins, 8},
    {theme_keys::colorcontrol_gradient_1, vec4{0.4f, 0.4f, 0.4f, 1.0f}},
    {theme_keys::colorcontrol_gradient_2, vec4{0.263f, 0.263f, 0.263f, 1.0f}},
    {theme_keys::colorcontrol_border_color_normal, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::colorcontrol_border_color_hover, vec4{1.0f, 1.0f, 1.0f, 1.0f}},
    {theme_keys::colorcontrol_border_color_focus, vec4{0.255f, 0.584f, 0.753f, 1.0f}},
    {theme_keys::colorcontrol_back_color_disabled, vec4{0.45f, 0.45f, 0.45f, 1.0f}},
    {theme_keys::dropdown_text_part_color, vec4{0.071f, 0.071f, 0.075f, 1.0f}},
    {theme_keys::dropdown_text_part_color_hover, vec4{0.239f, 0.247f, 0.263f, 1.0f}},
    {theme_keys::dropdown_gradient_text, true},
    {theme_keys::dropdown_gradient_text_1, vec4{0.553f, 0.545f, 0.545f, 1.0f}},
    {theme_keys::dropdown_gradient_text_2, vec4{0.796f, 0.784f, 0.784f, 1.0f}},
    {theme_keys::dropdown_button_part_color, vec4{0.173f, 0.176f, 0.192f, 1.0f}},
    {theme_keys::dropdown_button_part_color_hover, vec4{0.239f, 0.247f, 0.263f, 1.0f}},
    {theme_keys::dropdown_gradient_button, true},
    {theme_keys::dropdown_gradient_button_1, vec4{0.4f, 0.4f, 0.4f, 1.0f}},
    {theme_keys::dropdown_gradient_button_2, vec4{0.263f, 0.263f, 0.263f, 1.0f}},
    {theme_keys::dropdown_button_image, image_stream{}},
    {theme_keys::dropdown_border_color_normal, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::dropdown_border_color_hover, vec4{1.0f, 1.0f, 1.0f, 1.0f}},
    {theme_keys::dropdown_border_color_focus, vec4{0.255f, 0.584f, 0.753f, 1.0f}},
    {theme_keys::dropdown_font_name, "tahoma"},
    {theme_keys::dropdown_font_style, font_style::normal},
    {theme_keys::dropdown_font_weight, font_weight::regular},
    // Dark text: the closed box shows its choice over the light grey gradient above.
    {theme_keys::dropdown_font_color, vec4{0.094f, 0.094f, 0.102f, 1.0f}},
    {theme_keys::dropdown_font_color_extra, vec4{0.655f, 0.655f, 0.655f, 1.0f}},
    {theme_keys::dropdown_font_size, 12.0f},
    {theme_keys::dropdown_font_size_extra, 11.0f},
    {theme_keys::dropdown_text_align, text_align::left},
    {theme_keys::button_color_normal, vec4{0.173f, 0.176f, 0.192f, 1.0f}},
    {theme_keys::button_color_hover, vec4{0.239f, 0.247f, 0.263f, 1.0f}},
    {theme_keys::button_color_toggle, vec4{0.188f, 0.29f, 0.506f, 1.0f}},
    {theme_keys::button_border_color_normal, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::button_border_color_hover, vec4{1.0f, 1.0f, 1.0f, 1.0f}},
    {theme_keys::button_border_color_focus, vec4{0.6f, 0.6f, 0.6f, 1.0f}},
    {theme_keys::button_font_name, "tahoma"},
    {theme_keys::button_font_style, font_style::normal},
    {theme_keys::button_font_weight, font_weight::regular},
    {theme_keys::button_font_color, vec4{1.0f, 1.0f, 1.0f, 1.0f}},
    {theme_keys::button_font_color_hover, vec4{1.0f, 1.0f, 1.0f, 1.0f}},
    {theme_keys::button_font_color_pressed, vec4{1.0f, 1.0f, 1.0f, 1.0f}},
    {theme_keys::button_font_size, 12.0f},
    {theme_keys::button_back_image, image_stream{}},
    {theme_keys::button_back_image_strech, false},
    {theme_keys::menubar_back_color_selected, vec4{0.188f, 0.29f, 0.506f, 1.0f}},
    {theme_keys::menubar_back_color_highlight, vec4{0.239f, 0.247f, 0.263f, 1.0f}},
    {theme_keys::menubar_font_name, "tahoma"},
    {theme_keys::menubar_font_style, font_style::normal},
    {theme_keys::menubar_font_weight, font_weight::regular},
    {theme_keys::menubar_font_color, vec4{0.85f, 0.85f, 0.85f, 1.0f}},
    {theme_keys::menubar_font_color_selected, vec4{1.0f, 1.0f, 1.0f, 1.0f}},
    {theme_keys::menubar_font_color_highlight, vec4{1.0f, 1.0f, 1.0f, 1.0f}},
    {theme_keys::menubar_font_size, 12.0f},
    {theme_keys::splitpanel_back_color, vec4{0.0f, 0.0f, 0.0f, 1.0f}},
    {theme_keys::splitpanel_border_color_1, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::splitpanel_border_color_2, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::splitpanel_mark_color, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::splitpanel_split_thickness, 4},
    {theme_keys::tooltip_back_color, vec4{0.106f, 0.106f, 0.11f, 1.0f}},
    {theme_keys::tooltip_border_color, vec4{0.29f, 0.31f, 0.325f, 1.0f}},
    {theme_keys::tooltip_border_color_1, vec4{0.0f, 0.0f, 0.0f, 1.0f}},
    {theme_keys::tooltip_font_name, "tahoma"},
    {theme_keys::tooltip_font_style, font_style::normal},
    {theme_keys::tooltip_font_weight, font_weight::regular},
    {theme_keys::tooltip_font_color, vec4{0.655f, 0.655f, 0.655f, 1.0f}},
    {theme_keys::tooltip_font_size, 12.0f},
    {theme_keys::tooltip_title_font_name, "tahoma"},
    {theme_keys::tooltip_title_font_style, font_style::normal},
    {theme_keys::tooltip_title_font_weight, font_weight::bold},
    {theme_keys::tooltip_title_font_color, vec4{1.0f, 1.0f, 1.0f, 1.0f}},
    {theme_keys::tooltip_title_font_size, 13.0f},
    {theme_keys::multicolumn_header_color, vec4{0.173f, 0.176f, 0.192f, 1.0f}},
    {theme_keys::multicolumn_header_divider_color, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::multicolumn_header_font_name, "tahoma"},
    {theme_keys::multicolumn_header_font_style, font_style::normal},
    {theme_keys::multicolumn_header_font_weight, font_weight::regular},
    {theme_keys::multicolumn_header_font_color, vec4{0.85f, 0.85f, 0.85f, 1.0f}},
    {theme_keys::multicolumn_header_font_size, 12.0f},
    {theme_keys::multicolumn_font_name, "tahoma"},
    {theme_keys::multicolumn_font_style, font_style::normal},
    {theme_keys::multicolumn_font_weight, font_weight::regular},
    {theme_keys::multicolumn_font_size, 12.0f},
    {theme_keys::multicolumn_font_color, vec4{0.85f, 0.85f, 0.85f, 1.0f}},
    {theme_keys::multicolumn_font_color_selected, vec4{1.0f, 1.0f, 1.0f, 1.0f}},
    {theme_keys::multicolumn_font_color_disabled, vec4{0.45f, 0.45f, 0.45f, 1.0f}},
    {theme_keys::multicolumn_back_color_selected, vec4{0.188f, 0.29f, 0.506f, 1.0f}},
    {theme_keys::multicolumn_font_color_highlighted, vec4{1.0f, 1.0f, 1.0f, 1.0f}},
    {theme_keys::multicolumn_divider_color, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::multicolumn_line_color, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::tabcontainer_line_color, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::tabbutton_gradient_1, vec4{0.4f, 0.4f, 0.4f, 1.0f}},
    {theme_keys::tabbutton_gradient_2, vec4{0.263f, 0.263f, 0.263f, 1.0f}},
    {theme_keys::tabbutton_gradient_1_selected, vec4{0.188f, 0.29f, 0.506f, 1.0f}},
    {theme_keys::tabbutton_gradient_2_selected, vec4{0.188f, 0.29f, 0.506f, 1.0f}},
    {theme_keys::tabbutton_gradient_1_hover, vec4{0.239f, 0.247f, 0.263f, 1.0f}},
    {theme_keys::tabbutton_font_name, "tahoma"},
    {theme_keys::tabbutton_font_style, font_style::normal},
    {theme_keys::tabbutton_font_weight, font_weight::regular},
    {theme_keys::tabbutton_font_size, 12.0f},
    {theme_keys::tabbutton_font_color, vec4{0.85f, 0.85f, 0.85f, 1.0f}},
    {theme_keys::tabbutton_font_color_selected, vec4{1.0f, 1.0f, 1.0f, 1.0f}},
    {theme_keys::float_font_name, "tahoma"},
    {theme_keys::float_font_style, font_style::normal},
    {theme_keys::float_font_weight, font_weight::regular},
    {theme_keys::float_font_size, 12.0f},
    {theme_keys::float_font_color, vec4{0.455f, 0.784f, 0.953f, 1.0f}},
    {theme_keys::float_font_color_disabled, vec4{0.45f, 0.45f, 0.45f, 1.0f}},
    {theme_keys::float_input_back_color, vec4{0.145f, 0.149f, 0.165f, 1.0f}},
    {theme_keys::float_input_font_color, vec4{0.85f, 0.85f, 0.85f, 1.0f}},
    {theme_keys::float_input_font_default_text_color, vec4{0.5f, 0.5f, 0.5f, 1.0f}},
    {theme_keys::float_precision, 3},
    {theme_keys::multicontrol_font_name, "tahoma"},
    {theme_keys::multicontrol_font_size, 12.0f},
    {theme_keys::multicontrol_font_weight, font_weight::regular},
    {theme_keys::multicontrol_font_style, font_style::normal},
    {theme_keys::multicontrol_font_color, vec4{0.85f, 0.85f, 0.85f, 1.0f}},
    {theme_keys::multicontrol_lock_image, image_stream{}},
    {theme_keys::input_border_color, vec4{1.0f, 1.0f, 1.0f, 1.0f}},
    {theme_keys::input_selection_color, vec4{0.2f, 0.6f, 1.0f, 1.0f}},
    {theme_keys::input_ime_cursor_color, vec4{0.578f, 0.578f, 0.578f, 1.0f}},
    {theme_keys::input_ime_block_color, vec4{0.278f, 0.278f, 0.278f, 1.0f}},
    {theme_keys::input_font_name, "tahoma"},
    {theme_keys::input_font_style, font_style::normal},
    {theme_keys::input_font_weight, font_weight::regular},
    {theme_keys::input_font_size, 12.0f},
    {theme_keys::input_font_color, vec4{1.0f, 1.0f, 1.0f, 1.0f}},
    {theme_keys::input_font_color_selected, vec4{1.0f, 1.0f, 1.0f, 1.0f}},
    {theme_keys::input_inside_margins, _vec2<int>{4, 2}},
    {theme_keys::input_font_default_text_color, vec4{0.5f, 0.5f, 0.5f, 1.0f}},
    {theme_keys::scroll_button_back_color, vec4{0.22f, 0.235f, 0.251f, 1.0f}},
    {theme_keys::scroll_button_line_color, vec4{0.325f, 0.325f, 0.325f, 1.0f}},
    {theme_keys::scroll_button_arrow_image, image_stream{}},
    {theme_keys::scroll_bar_back_color, vec4{0.145f, 0.149f, 0.165f, 1.0f}},
    {theme_keys::scroll_bar_line_color, vec4{0.314f, 0.314f, 0.314f, 1.0f}},
    {theme_keys::scroll_back_color, vec4{0.145f, 0.149f, 0.165f, 1.0f}},
    {theme_keys::scroll_min_size, 20},
    {theme_keys::label_font_name, "tahoma"},
    {theme_keys::label_font_style, font_style::normal},
    {theme_keys::label_font_weight, font_weight::regular},
    {theme_keys::label_font_size, 12.0f},
    {theme_keys::label_font_color, vec4{0.85f, 0.85f, 0.85f, 1.0f}},
    {theme_keys::label_text_align, text_align::left},
    {theme_keys::label_text_valign, text_valign::center},
    {theme_keys::browser_back_color, vec4{0.145f, 0.149f, 0.165f, 1.0f}},
    {theme_keys::browser_back_color_hover, vec4{0.239f, 0.247f, 0.263f, 1.0f}},
    {theme_keys::browser_back_color_selected, vec4{0.188f, 0.29f, 0.506f, 1.0f}},
    {theme_keys::browser_font_color, vec4{0.85f, 0.85f, 0.85f, 1.0f}},
    {theme_keys::browser_font_color_hover, vec4{1.0f, 1.0f, 1.0f, 1.0f}},
    {theme_keys::browser_font_color_selected, vec4{1.0f, 1.0f, 1.0f, 1.0f}},
    {theme_keys::browser_font_name, "tahoma"},
    {theme_keys::browser_font_style, font_style::normal},
    {theme_keys::browser_font_weight, font_weight::regular},
    {theme_keys::browser_font_weight_selected, font_weight::bold},
    {theme_keys::browser_font_size, 12.0f},
    {theme_keys::browser_scroll_width, 14},
    {theme_keys::browser_expand_image, image_stream{}},
    {theme_keys::browser_folder_image, image_stream{}},
    {theme_keys::browser_pack_image, image_stream{}},
    {theme_keys::browser_stared_image, image_stream{}},
    {theme_keys::browser_alien_image, image_stream{}},
    {theme_keys::browser_virtual_image, image_stream{}},
    {theme_keys::editparam_height, 22},
    {theme_keys::editparam_margins, _vec2<int>{4, 4}},
    {theme_keys::editparam_flex_param, false},
    {theme_keys::editparam_param_offset, 120},
    {theme_keys::editparam_back_color, vec4{0.145f, 0.149f, 0.165f, 1.0f}},
    {theme_keys::editparam_back_color_hover, vec4{0.239f, 0.247f, 0.263f, 1.0f}},
    {theme_keys::editparam_font_color, vec4{0.85f, 0.85f, 0.85f, 1.0f}},
    {theme_keys::editparam_font_color_disabled, vec4{0.45f, 0.45f, 0.45f, 1.0f}},
    {theme_keys::editparam_font_name, "tahoma"},
    {theme_keys::editparam_font_style, font_style::normal},
    {theme_keys::editparam_font_weight, font_weight::regular},
    {theme_keys::editparam_font_size, 12.0f},
    {theme_keys::editparam_title_height, 22},
    {theme_keys::editparam_title_back_color, vec4{0.173f, 0.176f, 0.192f, 1.0f}},
    {theme_keys::editparam_title_font_weight, font_weight::bold},
    {theme_keys::editparam_title_font_color, vec4{0.85f, 0.85f, 0.85f, 1.0f}},
    {theme_keys::editparam_icon_image, image_stream{}},
    {theme_keys::editparam_combo_size, _vec2<int>{120, 20}},
    {theme_keys::editparam_float_size, _vec2<int>{60, 20}},
    {theme_keys::editparam_keyframe_color, vec4{0.255f, 0.584f, 0.753f, 1.0f}},
    {theme_keys::editparam_keyframe_size, 8},
    {theme_keys::multiwindow_back_color, vec4{0.145f, 0.149f, 0.165f, 1.0f}},
    {theme_keys::multiwindow_border_width, 1.0f},
    {theme_keys::multiwindow_border_color, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::multiwindow_title_back_color, vec4{0.173f, 0.176f, 0.192f, 1.0f}},
    {theme_keys::multiwindow_tab_color, vec4{0.173f, 0.176f, 0.192f, 1.0f}},
    {theme_keys::multiwindow_tab_color_selected, vec4{0.188f, 0.29f, 0.506f, 1.0f}},
    {theme_keys::multiwindow_tab_gradient, false},
    {theme_keys::multiwindow_tab_gradient_1, vec4{0.4f, 0.4f, 0.4f, 1.0f}},
    {theme_keys::multiwindow_tab_gradient_2, vec4{0.263f, 0.263f, 0.263f, 1.0f}},
    {theme_keys::multiwindow_tab_gradient_1_selected, vec4{0.188f, 0.29f, 0.506f, 1.0f}},
    {theme_keys::multiwindow_tab_gradient_2_selected, vec4{0.188f, 0.29f, 0.506f, 1.0f}},
    {theme_keys::multiwindow_tab_line_color, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::multiwindow_tab_line_color_selected, vec4{0.188f, 0.29f, 0.506f, 1.0f}},
    {theme_keys::multiwindow_tab_split_line_color, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::multiwindow_tab_font_name, "tahoma"},
    {theme_keys::multiwindow_tab_font_style, font_style::normal},
    {theme_keys::multiwindow_tab_font_weight, font_weight::regular},
    {theme_keys::multiwindow_tab_font_size, 12.0f},
    {theme_keys::multiwindow_tab_font_color, vec4{0.85f, 0.85f, 0.85f, 1.0f}},
    {theme_keys::multiwindow_tab_height, 24},
    {theme_keys::multiwindow_button_color, vec4{0.173f, 0.176f, 0.192f, 1.0f}},
    {theme_keys::multiwindow_button_color_hover, vec4{0.239f, 0.247f, 0.263f, 1.0f}},
    {theme_keys::multiwindow_button_image, image_stream{}},
    {theme_keys::multiwindow_button_border_color_hover, vec4{1.0f, 1.0f, 1.0f, 1.0f}},
    {theme_keys::node_back_color, vec4{0.145f, 0.149f, 0.165f, 1.0f}},
    {theme_keys::node_expand_button_image, image_stream{}},
    {theme_keys::node_border_color_normal, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::node_border_color_hover, vec4{1.0f, 1.0f, 1.0f, 1.0f}},
    {theme_keys::node_border_color_selected, vec4{0.255f, 0.584f, 0.753f, 1.0f}},
    {theme_keys::node_border_color_focus, vec4{0.255f, 0.584f, 0.753f, 1.0f}},
    {theme_keys::node_port_back_color_normal, vec4{0.145f, 0.149f, 0.165f, 1.0f}},
    {theme_keys::node_port_back_color_hover, vec4{0.239f, 0.247f, 0.263f, 1.0f}},
    {theme_keys::node_port_border_color_normal, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::node_port_border_color_hover, vec4{1.0f, 1.0f, 1.0f, 1.0f}},
    {theme_keys::node_port_output_image, image_stream{}},
    {theme_keys::node_port_input_image, image_stream{}},
    {theme_keys::node_link_color_normal, vec4{0.255f, 0.584f, 0.753f, 1.0f}},
    {theme_keys::node_link_color_ghost, vec4{0.5f, 0.5f, 0.5f, 0.5f}},
    {theme_keys::node_link_color_hover, vec4{0.239f, 0.247f, 0.263f, 1.0f}},
    {theme_keys::node_link_color_selected, vec4{0.188f, 0.29f, 0.506f, 1.0f}},
    {theme_keys::node_link_color_selected_hover, vec4{0.188f, 0.29f, 0.506f, 1.0f}},
    {theme_keys::node_link_glow, 4.0f},
    {theme_keys::node_link_thickness, 2.0f},
    {theme_keys::node_canvas_grid_color, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::node_canvas_selection_back_color, vec4{0.188f, 0.29f, 0.506f, 1.0f}},
    {theme_keys::node_canvas_selection_border_color, vec4{0.255f, 0.584f, 0.753f, 1.0f}},
    {theme_keys::timeline_back_color, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::timeline_margins, _vec2<int>{4, 4}},
    {theme_keys::timeline_mark_height, 6},
    {theme_keys::timeline_mark_color, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::timeline_indicator_width, 2},
    {theme_keys::timeline_indicator_color_normal, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::timeline_indicator_color_hover, vec4{0.239f, 0.247f, 0.263f, 1.0f}},
    {theme_keys::timeline_indicator_image, image_stream{}},
    {theme_keys::timeline_font_name, "tahoma"},
    {theme_keys::timeline_font_style, font_style::normal},
    {theme_keys::timeline_font_weight, font_weight::regular},
    {theme_keys::timeline_font_size, 12.0f},
    {theme_keys::timeline_font_color, vec4{0.85f, 0.85f, 0.85f, 1.0f}},
    {theme_keys::timeline_key_mark_size, 8},
    {theme_keys::timeline_key_mark_color_normal, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::timeline_key_mark_color_hover, vec4{0.239f, 0.247f, 0.263f, 1.0f}},
    {theme_keys::timeline_key_mark_image, image_stream{}},
    {theme_keys::timeline_loop_mark_image, image_stream{}},
    {theme_keys::timeline_loop_mark_color, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::timeline_loop_back_color, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::curve_editor_mark_color_normal, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::curve_editor_mark_color_hover, vec4{0.239f, 0.247f, 0.263f, 1.0f}},
    {theme_keys::curve_editor_mark_image, image_stream{}},
    {theme_keys::curve_editor_mark_control_image, image_stream{}},
    {theme_keys::curve_editor_mark_control_color, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
    {theme_keys::curve_editor_curve_thickness, 1.5f},
    {theme_keys::curve_editor_grid_color, vec4{0.314f, 0.314f, 0.322f, 1.0f}},
};

} // namespace

theme::style_map theme::plugin_map;
const theme::style_map theme::default_map(std::begin(default_table), std::end(default_table),
                                          std::size(default_table));

std::span<const std::string_view> theme::default_keys() {
    static const auto keys = [] {
        std::vector<std::string_view> out;
        out.reserve(std::size(default_table));
        for (const auto& entry : default_table)
            out.push_back(entry.first);
        return out;
    }();
    return keys;
}

theme::theme(event_object* owner) : owner(owner) {
    styles.max_load_factor(1.0f);
    links.max_load_factor(1.0f);
}

theme::theme(const theme& other) : styles(other.styles), links(other.links) {}

theme& theme::operator=(const theme& other) {
    if (this != &other) {
        styles = other.styles;
        links = other.links;
    }
    return *this;
}

void theme::set_style(std::string_view key, theme_style style) {
    styles.insert_or_assign(key, std::move(style));
    if (owner)
        event_manager::instance().fire_event(owner, event_type::theme_changed, pack_pointer(key.data()));
}

std::string_view theme::translate(std::string_view key) const {
    auto it = links.find(key);
    return it == links.end() ? key : it->second;
}

void theme::link(std::string_view key, std::string_view target) {
    auto [it, inserted] = links.try_emplace(key, target);
    if (!inserted) {
        if (it->second == target)
            return;
        it->second = target;
    }
    if (owner)
        event_manager::instance().fire_event(owner, event_type::theme_changed, pack_pointer(key.data()));
}

theme_style theme::get_theme_style(std::string_view key) const {
    const std::string_view name = translate(key);
    if (auto it = styles.find(name); it != styles.end())
        return it->second;
    if (auto it = plugin_map.find(name); it != plugin_map.end())
        return it->second;
    if (auto it = default_map.find(name); it != default_map.end())
        return it->second;
    NIMBIT_ASSERT(false && "Style not found");
    return {};
}

} // namespace nimbit::ui
