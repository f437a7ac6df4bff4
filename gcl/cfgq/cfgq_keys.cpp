// The key catalogue: the names under which the suite's tools store their settings, and a few
// value texts. Every text is part of the settings file's format, letter for letter; a text with
// a blank draws the blank diagnostic whenever it is used as a value name.
// May use: cfgq.
#include <cstdint>

#include "cfgq.h"

// ---- Key constants, by the module code of the tool that owns them ---------------------------

// ACVQ
const char* const CFGQ_ACVQ_AUTO_LAYER_DISABLE_STR = "Auto_layer_disable";
const char* const CFGQ_ACVQ_DISABLE_FM_SHADING_STR = "Disable_FM_shading";
const char* const CFGQ_ACVQ_ENABLE_LOAD_CLOCK_STR = "Enable_clock_loading";
const char* const CFGQ_ACVQ_LAYER_SETTINGS_STR = "Layer_settings";
const char* const CFGQ_ACVQ_SHOW_DETAILED_TOOLTIPS_STR = "Show_detailed_tooltips";
const char* const CFGQ_ACVQ_SKIP_GLOBAL_FANIN_STR = "Skip_global_fanin";
const char* const CFGQ_ACVQ_TOOLTIP_DELAY_UNTIL_SHOW_STR = "Tooltip_delay_until_show";
const char* const CFGQ_ACVQ_TOOLTIP_DISPLAY_DURATION_STR = "Tooltip_display_duration";
const char* const CFGQ_ACVQ_TOOLTIP_ENABLE_STR = "Tooltip_enable";

// APEQ
const char* const CFGQ_APEQ_AUTO_LOCATE_ACV_STR = "Auto_locate_to_Chip_Planner";
const char* const CFGQ_APEQ_ENABLE_ROLLOVER_STR = "Enable_Rollover";
const char* const CFGQ_APEQ_NO_STR = "No";
const char* const CFGQ_APEQ_TOOLTIP_DELAY_UNTIL_SHOW_STR = "Tooltip_delay_until_show";
const char* const CFGQ_APEQ_TOOLTIP_DISPLAY_DURATION_STR = "Tooltip_display_duration";
const char* const CFGQ_APEQ_TOOLTIP_ENABLE_STR = "Tooltip_enable";
const char* const CFGQ_APEQ_YES_STR = "Yes";

// ASEQ
const char* const CFGQ_ASEQ_ACTIVATE_NODE_FILTER =
    "Activate_Node_Filter_when_clicking_in_node_list";
const char* const CFGQ_ASEQ_ACTIVATE_SYSTEM_TAB =
    "Activate_System_Tab_of_Messages_Window_when_posting_messages";
const char* const CFGQ_ASEQ_DROP_DOWN_LISTS =
    "Drop_down_lists_automatically_when_applicable_during_editing";
const char* const CFGQ_ASEQ_ECHO_TCL_COMMANDS = "Echo_Tcl_commands";
const char* const CFGQ_ASEQ_MOVE_AFTER_ENTER = "Move_selection_after_Enter";
const char* const CFGQ_ASEQ_MOVE_DIRECTION = "Move_direction";
const char* const CFGQ_ASEQ_MOVE_DOWN = "Down";
const char* const CFGQ_ASEQ_MOVE_LEFT = "Left";
const char* const CFGQ_ASEQ_MOVE_RIGHT = "Right";
const char* const CFGQ_ASEQ_MOVE_UP = "Up";
const char* const CFGQ_ASEQ_SHOW_ASSIGNED_PIN_NAMES = "Show_assigned_pin_names";
const char* const CFGQ_ASEQ_SHOW_ASSIGNED_PIN_NUMBERS = "Show_assigned_pin_numbers";
const char* const CFGQ_ASEQ_SHOW_PAD_NUMBERS = "Show_pad_numbers";
const char* const CFGQ_ASEQ_SINGLE_CLICK_EDIT = "Single_click_starts_editing";

// BMWQ
const char* const CFGQ_BMWQ_READ_FROM_USER_SPECIFIED_PROJECT =
    "Read_Settings_from_User_Specified_Project";
const char* const CFGQ_BMWQ_READ_SETTINGS_FROM_ANOTHER_PROJECT =
    "Read_Settings_from_Another_Project";
const char* const CFGQ_BMWQ_SHOW_PROJECT_INTRO_PAGE = "Show_Project_Intro_Page";
const char* const CFGQ_BMWQ_SHOW_TIMING_INTRO_PAGE = "Show_Timing_Intro_Page";
const char* const CFGQ_BMWQ_SHOW_XACTO_EXPORT_MODULE_INTRO_PAGE = "Show_Export_Module_Intro_Page";
const char* const CFGQ_BMWQ_USER_SPECIFIED_PROJECT_NAME = "User_Specified_Project_Name";
const char* const CFGQ_BMWQ_USER_SPECIFIED_REVISION_NAME = "User_Specified_Revision_Name";

// CFWQ
const char* const CFGQ_CFWQ_SHOW_MODULE_SETTINGS_STR = "CFW_show_module_settings_buttons";
const char* const CFGQ_CFWQ_SHOW_MODULE_START_STR = "CFW_show_module_start_buttons";
const char* const CFGQ_CFWQ_SHOW_PROCESS_WND_STR = "CFW_show_process_window_%d";
const char* const CFGQ_CFWQ_SHOW_TIME_STR = "CFW_show_time";

// DEEQU
const char* const CFGQ_DEEQU_AUTO_EXPAND_TO_SELECTION = "auto_expand_to_selection";
const char* const CFGQ_DEEQU_AUTO_ZOOM_TO_SELECTION = "auto_zoom_to_selection";
const char* const CFGQ_DEEQU_FILTER_LEVEL = "filter_level";
const char* const CFGQ_DEEQU_FILTER_LEVEL_COUNT = "filter_level_count";
const char* const CFGQ_DEEQU_FILTER_PARTITION = "filter_stop_at_partition";
const char* const CFGQ_DEEQU_FILTER_REGISTER = "filter_stop_at_register";

// DEEQ
const char* const CFGQ_DEEQ_CELL_ATTR_SHOW = "Cell_attr_show";
const char* const CFGQ_DEEQ_COLOR_THEME = "Color_theme";
const char* const CFGQ_DEEQ_ENABLE_ROLLOVER = "Enable_rollover";
const char* const CFGQ_DEEQ_FILTER_ACROSS_HIERARCHY = "Filter_across_hierarchies";
const char* const CFGQ_DEEQ_FILTER_LEVEL = "Filter_level";
const char* const CFGQ_DEEQ_FILTER_LEVEL_COUNT = "Filter_level_count";
const char* const CFGQ_DEEQ_FILTER_REGISTER = "Filter_stop_at_register";
const char* const CFGQ_DEEQ_FLAT_NET_SHOW = "Flat_net_show";
const char* const CFGQ_DEEQ_LAST_ACTIVE_WINDOW = "Last_active_window";
const char* const CFGQ_DEEQ_LAST_OPEN_TABS = "Last_open_tabs";
const char* const CFGQ_DEEQ_LOCATE_INTO_NEW_TAB = "Locate_into_new_tab";
const char* const CFGQ_DEEQ_MAINTAIN_SELECTION = "Maintain_selection";
const char* const CFGQ_DEEQ_NODE_NAME_MAX_LENGTH = "Node_name_max_length";
const char* const CFGQ_DEEQ_NODE_NAME_SHOW_FULL = "Node_name_show_full";
const char* const CFGQ_DEEQ_PIN_NAME_MAX_LENGTH = "Pin_name_max_length";
const char* const CFGQ_DEEQ_PIN_NAME_SHOW_FULL = "Pin_name_show_full";
const char* const CFGQ_DEEQ_PORT_NAME_MAX_LENGTH = "Port_name_max_length";
const char* const CFGQ_DEEQ_PORT_NAME_SHOW_FULL = "Port_name_show_full";
const char* const CFGQ_DEEQ_RIP_ATTR_MAX_LENGTH = "Rip_attr_max_length";
const char* const CFGQ_DEEQ_RIP_ATTR_SHOW_FULL = "Rip_attr_show_full";
const char* const CFGQ_DEEQ_TAB_ARRANGEMENT = "Tab_arrangement";
const char* const CFGQ_DEEQ_TIMING_ATTR_SHOW = "Timing_attr_show";
const char* const CFGQ_DEEQ_VCONN_ATTR_SHOW = "Vconn_attr_show";

// DPWQ
const char* const CFGQ_DPWQ_COLOR_COLUMN_VISIBLE_STR = "Show_color_column";
const char* const CFGQ_DPWQ_EXPORT_FILE_PATH_STR = "Export_KXP_file_path";
const char* const CFGQ_DPWQ_EXPORT_FLATTEN_STR = "Export_flatten";
const char* const CFGQ_DPWQ_EXPORT_LAST_REV_PATH_STR = "Last_exported_revision_path";
const char* const CFGQ_DPWQ_EXPORT_PARTITION_NAME_STR = "Export_partition_name";
const char* const CFGQ_DPWQ_EXPORT_POST_FIT_STR = "Export_post-fit_netlist";
const char* const CFGQ_DPWQ_EXPORT_POST_SYNTH_STR = "Export_post-synth_netlist";
const char* const CFGQ_DPWQ_EXPORT_ROUTING_STR = "Export_routing";
const char* const CFGQ_DPWQ_FENMARK_REGION_COLUMN_VISIBLE_STR = "Show_FenMark_region_column";
const char* const CFGQ_DPWQ_FITTER_PRESERVATION_LEVEL_COLUMN_VISIBLE_STR =
    "Show_fitter_preservation_level_column";
const char* const CFGQ_DPWQ_IMPORT_FILE_COLUMN_VISIBLE_STR = "Show_import_file_column";
const char* const CFGQ_DPWQ_KPM_DESIGN_PARTITION_ASGNS_STR = "KPM_design_partition_assignments";
const char* const CFGQ_DPWQ_KPM_DESTROY_EXISTING_FENMARK_STR =
    "KPM_destroy_existing_FenMark_regions";
const char* const CFGQ_DPWQ_KPM_DISABLE_AUTO_GLOBAL_PROMOTION_STR =
    "KPM_disable_auto_global_promotion";
const char* const CFGQ_DPWQ_KPM_EXCLUDED_PARTITIONS_STR = "KPM_partitions_to_exclude";
const char* const CFGQ_DPWQ_KPM_FENMARK_ASGNS_STR = "KPM_FenMark_assignments";
const char* const CFGQ_DPWQ_KPM_GENERATE_MAKEFILES_STR = "KPM_generate_makefiles";
const char* const CFGQ_DPWQ_KPM_GLOBAL_PROMOTION_STR = "KPM_global_promotion";
const char* const CFGQ_DPWQ_KPM_OUTPUT_DIRECTORY_STR = "KPM_script_output_directory";
const char* const CFGQ_DPWQ_KPM_PIN_LOCATION_STR = "KPM_pin_location";
const char* const CFGQ_DPWQ_KPM_PROJECT_CREATION_STR = "KPM_project_creation";
const char* const CFGQ_DPWQ_KPM_PROJECT_ROOT_DIRECTORY_STR = "KPM_project_root_directory";
const char* const CFGQ_DPWQ_KPM_TIMING_ASGNS_STR = "KPM_timing_assignments";
const char* const CFGQ_DPWQ_KPM_UNRELATED_FENMARK_ASGN_STR = "KPM_unrelated_FenMark_assignments";
const char* const CFGQ_DPWQ_KPM_VIRTUAL_INPUT_PIN_DELAY_STR = "KPM_virtual_input_pin_delay";
const char* const CFGQ_DPWQ_KPM_VIRTUAL_INPUT_PIN_TIMING_STR = "KPM_virtual_input_pin_timing";
const char* const CFGQ_DPWQ_KPM_VIRTUAL_OUTPUT_PIN_DELAY_STR = "KPM_virtual_output_pin_delay";
const char* const CFGQ_DPWQ_KPM_VIRTUAL_OUTPUT_PIN_TIMING_STR = "KPM_virtual_output_pin_timing";
const char* const CFGQ_DPWQ_KPM_VIRTUAL_PIN_CREATION_STR = "KPM_virtual_pin_creation";
const char* const CFGQ_DPWQ_KPM_VIRTUAL_PIN_LOCATION_STR = "KPM_virtual_pin_location";
const char* const CFGQ_DPWQ_NETLIST_STATUS_COLUMN_VISIBLE_STR = "Show_netlist_status_columns";
const char* const CFGQ_DPWQ_NETLIST_TYPE_COLUMN_VISIBLE_STR = "Show_netlist_type_column";

// ECO
const char* const CFGQ_ECO_SHOW_APPLY_CONFIRM_DLG = "Show_apply_confirmation_dialog";
const char* const CFGQ_ECO_SHOW_DELETE_CONFIRM_DLG = "Show_delete_confirmation_dialog";
const char* const CFGQ_ECO_SHOW_RESTORE_CONFIRM_DLG = "Show_restore_confirmation_dialog";

// FIF
const char* const CFGQ_FIF_FIND_FILE_TYPE_INDEX = "Last_File_Type_Secection";
const char* const CFGQ_FIF_FIND_FILE_TYPE_STR = "Last_File_Type_String";

// FMWQ
const char* const CFGQ_FMWQ_DONT_SHOW_AGAIN_STR = "Don't show messagebox again";
const char* const CFGQ_FMWQ_ENABLED_COLUMN_VISIBLE_STR = "Show_enabled_column";
const char* const CFGQ_FMWQ_HEIGHT_COLUMN_VISIBLE_STR = "Show_height_column";
const char* const CFGQ_FMWQ_MEMBERS_COLUMN_VISIBLE_STR = "Show_members_column";
const char* const CFGQ_FMWQ_ORIGIN_COLUMN_VISIBLE_STR = "Show_origin_column";
const char* const CFGQ_FMWQ_RESERVED_COLUMN_VISIBLE_STR = "Show_reserved_column";
const char* const CFGQ_FMWQ_SIZE_COLUMN_VISIBLE_STR = "Show_size_column";
const char* const CFGQ_FMWQ_SOFT_COLUMN_VISIBLE_STR = "Show_soft_column";
const char* const CFGQ_FMWQ_STATE_COLUMN_VISIBLE_STR = "Show_state_column";
const char* const CFGQ_FMWQ_TOOLTIP_DELAY_UNTIL_SHOW_STR = "Tooltip_delay_until_show";
const char* const CFGQ_FMWQ_TOOLTIP_DISPLAY_DURATION_STR = "Tooltip_display_duration";
const char* const CFGQ_FMWQ_WIDTH_COLUMN_VISIBLE_STR = "Show_width_column";

// GEDQ
const char* const CFGQ_GEDQ_DBLCLK_SHOW_PROPSHEET_STR = "Double_click_show_property_sheet";
const char* const CFGQ_GEDQ_GRIDLINE_SPACING_STR = "Gridline_spacing";
const char* const CFGQ_GEDQ_INCLUDE_BORDER_STR = "Include_printing_border";
const char* const CFGQ_GEDQ_NO_STR = "No";
const char* const CFGQ_GEDQ_PARTIAL_LINE_SELECTION_STR = "Use_Partial_Line_Selection";
const char* const CFGQ_GEDQ_SHOW_BLOCKIO_ABLOCKS_STR = "Show_block_IO_tables";
const char* const CFGQ_GEDQ_SHOW_CONNECTION_RECT_STR = "Show_connection_rectangle";
const char* const CFGQ_GEDQ_SHOW_GRIDLINES_STR = "Show_gridlines";
const char* const CFGQ_GEDQ_SHOW_IOSTANDARD_ABLOCKS_STR =
    "Show_IO_standard_and_reserve_pin_assignments";
const char* const CFGQ_GEDQ_SHOW_LOCATION_ABLOCKS_STR = "Show_location_assignments";
const char* const CFGQ_GEDQ_SHOW_MAPPER_ABLOCKS_STR = "Show_mapper_tables";
const char* const CFGQ_GEDQ_SHOW_PAGEBREAKS_STR = "Show_pagebreaks";
const char* const CFGQ_GEDQ_SHOW_PARAM_ABLOCKS_STR = "Show_parameter_assignments";
const char* const CFGQ_GEDQ_USE_RUBBERBANDING_STR = "Use_rubberbanding";
const char* const CFGQ_GEDQ_YES_STR = "Yes";

// ICTQ
const char* const CFGQ_ICTQ_CURRENT_MRN = "Current_Message_Release_Number";
const char* const CFGQ_ICTQ_LAST_MAJOR_INFO_MSG_VIEWED = "Last_Major_Info_Message_Viewed";
const char* const CFGQ_ICTQ_LAST_MINOR_INFO_MSG_VIEWED = "Last_Minor_Info_Message_Viewed";
const char* const CFGQ_ICTQ_LAST_MRN_VIEWED = "Last_Message_Release_Number_Viewed";
const char* const CFGQ_ICTQ_NR_MSG_URL = "NewsRelay_Message_URL";
const char* const CFGQ_ICTQ_PROJECT_DIRECTORY = "Project_Directory";

// KUI
const char* const CFGQ_KUI_CONFIRM_BEFORE_SAVE = "Confirm_Before_Save";
const char* const CFGQ_KUI_CONFIRM_BEFORE_STARTING_TASK = "Confirm_Before_Starting_Task";
const char* const CFGQ_KUI_CONFIRM_BEFORE_STOP_TASK = "Confirm_Before_Stop_Task";
const char* const CFGQ_KUI_CURRENT_PROJECT = "current_project";
const char* const CFGQ_KUI_DOCK_WIDGET = "dock_widget";
const char* const CFGQ_KUI_ETE = "external_text_editor";
const char* const CFGQ_KUI_ETE_CLO = "ete_command_line_options";
const char* const CFGQ_KUI_LOCATION_SELECTION_MODEL = "selection_synchronous";
const char* const CFGQ_KUI_SEPARATE_PJNQ_DOCK_WIDGETS = "separate_navigator_dock_widgets";
const char* const CFGQ_KUI_SHOW_MULTI_INSTANCE_DLG = "show_multi_instance_dlg";
const char* const CFGQ_KUI_SHOW_PROJECT_OPEN_SECURITY_PROMPT = "show_project_open_security_prompt";
const char* const CFGQ_KUI_SINGLETON_DETACH_STATE = "singleton_attach_state";
const char* const CFGQ_KUI_SYNCH_TO_CHIP_PLANNER = "selection_synchronous_chip_planner";
const char* const CFGQ_KUI_SYNCH_TO_PIN_PLANNER = "selection_synchronous_pin_planner";
const char* const CFGQ_KUI_SYNCH_TO_TECH_MAP_VIEWER_POSTFIT =
    "selection_synchronous_tech_viewers_postfit";
const char* const CFGQ_KUI_SYNCH_TO_TECH_MAP_VIEWER_POSTMAP =
    "selection_synchronous_tech_viewers_postmap";
const char* const CFGQ_KUI_SYNCH_WITH_ANIMATION = "selection_synchronous_animation";
const char* const CFGQ_KUI_USE_ETE = "use_external_text_editor";

// LFPQ
const char* const CFGQ_LFPQ_EDGE_ANIMATION_SPEED_STR = "Animation_interval";
const char* const CFGQ_LFPQ_EDGE_ENABLE_ANIMATIONS_STR = "Enable_animations";
const char* const CFGQ_LFPQ_EDGE_FAILING_SLACK_STR = "Failing_slack_num";
const char* const CFGQ_LFPQ_ENABLE_DIRECTIONAL_BUNDLES_STR = "Enable_Directional_Bundles";
const char* const CFGQ_LFPQ_MAX_TARGET_PARTITION_SIZE_STR = "Max_partition_size";
const char* const CFGQ_LFPQ_MIN_TARGET_PARTITION_SIZE_STR = "Min_partion_size";
const char* const CFGQ_LFPQ_TOOLTIP_DELAY_UNTIL_SHOW_STR = "Tooltip_delay_until_show";
const char* const CFGQ_LFPQ_TOOLTIP_DISPLAY_DURATION_STR = "Tooltip_display_duration";
const char* const CFGQ_LFPQ_TOOLTIP_ENABLE_STR = "Tooltip_enable";
const char* const CFGQ_LFPQ_ZOOM_FIT_ON_HIERARCHY_DISPLAY_STR =
    "Enable_zoom_fit_on_hierarchy_display";

// LIST_CTR: list-control column layouts
const char* const CFGQ_LIST_CTR_COMPILER_SETTINGS_CHIPS = "Chip_Pins_tab_list_control";
const char* const CFGQ_LIST_CTR_COMPILER_SETTINGS_GENERAL = "Compiler_Settings_General_Page";
const char* const CFGQ_LIST_CTR_OPTIONS_EDA_TOOL_PATH_LIST = "Options_EDA_Tool_Path_list_control";
const char* const CFGQ_LIST_CTR_OPTIONS_USER_LIBRARY_LIST = "Options_User_Library_Page";
const char* const CFGQ_LIST_CTR_PROJECT_EDA_LIST = "Project_EDA_Tool_Settings";
const char* const CFGQ_LIST_CTR_PROJECT_GENERAL_FILES = "Project_Files_Page";
const char* const CFGQ_LIST_CTR_PROJECT_GENERAL_LIBRARY = "Project_Library_Page";
const char* const CFGQ_LIST_CTR_PROJECT_GENERAL_VHDL_INPUT = "VHDL_Input_Library_Name_and_Path";
const char* const CFGQ_LIST_CTR_PROJECT_TIMING_CLOCK = "Project_Clock_Page";
const char* const CFGQ_LIST_CTR_PROJECT_WIZARD_FILES = "Project_Wizard_Files_Page";
const char* const CFGQ_LIST_CTR_PROJECT_WIZARD_GLOBAL_LIBRARY =
    "Project_Wizard_Library_Dialog_Global";
const char* const CFGQ_LIST_CTR_PROJECT_WIZARD_LIBRARY = "Project_Wizard_Library_Dialog";
const char* const CFGQ_LIST_CTR_SETD_ADD_FILES_LIST = "Settings_Dialog_Add_Files_list_control";
const char* const CFGQ_LIST_CTR_SETD_MULTIPLE_SIMULATION_LIST =
    "Settings_Dialog_Multiple_Simulation_list_control";
const char* const CFGQ_LIST_CTR_SETD_POWER_INPUT_LIST = "Settings_Dialog_Power_Input_list_control";
const char* const CFGQ_LIST_CTR_SETD_TESTBENCH_FILE_LIST =
    "Settings_Dialog_Test_Bench_file_list_control";
const char* const CFGQ_LIST_CTR_SETD_TESTBENCH_LIST = "Settings_Dialog_Test_Bench_list_control";
const char* const CFGQ_LIST_CTR_SETTINGS_DIALOG_DEVICE_LIST = "Settings_Dialog_Device_Page";
const char* const CFGQ_LIST_CTR_SIGNAL_PROBE_SETTINGS_PINS =
    "Signal_Probe_routing_tab_list_control";
const char* const CFGQ_LIST_CTR_SIMULATOR_SETTINGS_GENERAL = "Simulator_Settings_General_Page";
const char* const CFGQ_LIST_CTR_TIMING_WIZARD_CLOCK_LIST = "Timing_Wizard_Clock_list_control";
const char* const CFGQ_LIST_CTR_TMW_NEW_FLOW_DLG_LIST = "Tasks_Window_New_Flow_Dialog_list_control";
const char* const CFGQ_LIST_CTR_TMW_TCL_SCRIPTS_DLG_LIST = "Tasks_Window_Tcl_Scripts_list_control";

// MEDQ
const char* const CFGQ_MEDQ_ADDRESS_RADIX = "Address_Radix";
const char* const CFGQ_MEDQ_ASK_TO_UPDATE_FROM_SIM = "Ask_to_update_during_simulation";
const char* const CFGQ_MEDQ_CONFIRM_BEFORE_REFRESH = "Confirm_before_refresh";
const char* const CFGQ_MEDQ_DEFAULT_NUMBER_OF_WORDS = "Default_number_of_words";
const char* const CFGQ_MEDQ_DEFAULT_WORD_SIZE = "Default_word_size";
const char* const CFGQ_MEDQ_MEMORY_RADIX = "Memory_Radix";
const char* const CFGQ_MEDQ_NUMBER_OF_COLUMNS = "Number_of_columns";
const char* const CFGQ_MEDQ_SHOW_ASCII_COLUMN = "Show_ASCII_column";
const char* const CFGQ_MEDQ_SHOW_DELIMITERS = "Show_Delimiters";

// MSWQ
const char* const CFGQ_MSWQ_COLOR_CODING_STR = "Color_coding";
const char* const CFGQ_MSWQ_FILE_COL = "file_column";
const char* const CFGQ_MSWQ_FLAG_COL = "flag_column";
const char* const CFGQ_MSWQ_FREEZE_ID_COL = "freeze_message_id_column";
const char* const CFGQ_MSWQ_HIDE_SUPPRESSION_RULE_NOTIFICATION =
    "hide_suppression_rule_notification";
const char* const CFGQ_MSWQ_ID_COL = "id_column_in_korvel_12_1_and_later";
const char* const CFGQ_MSWQ_LINE_COL = "line_column";
const char* const CFGQ_MSWQ_PARTITION_COL = "partition_column";
const char* const CFGQ_MSWQ_SEARCH_MODE = "MSG_search_mode";
const char* const CFGQ_MSWQ_SHOW_ALL_SUBMESSAGES_STR = "MSG_show_all_submessages";
const char* const CFGQ_MSWQ_SHOW_FILTER_BAR = "show_filter_bar";
const char* const CFGQ_MSWQ_SHOW_TAB_MSG_COUNT = "show_tab_message_count";
const char* const CFGQ_MSWQ_SOURCE_COL = "source_column";
const char* const CFGQ_MSWQ_TIME_COL = "time_column";
const char* const CFGQ_MSWQ_WRAP_MSG_TEXT = "wrap_message_text";

// NUIQU
const char* const CFGQ_NUIQU_AUTOHIDE_INST_WITHOUT_LOGIC = "Autohide_inst_without_logic";
const char* const CFGQ_NUIQU_AUTOHIDE_LEAF_INST_PINS = "Autohide_leaf_inst_pins";
const char* const CFGQ_NUIQU_AUTOHIDE_PINS = "Autohide_pins";
const char* const CFGQ_NUIQU_AUTO_EXPAND_TO_SELECTION = "auto_expand_to_selection";
const char* const CFGQ_NUIQU_AUTO_RESTORE_LAST_CLOSED_VIEW = "auto_restore_last_closed_view";
const char* const CFGQ_NUIQU_AUTO_ZOOM_TO_SELECTION = "auto_zoom_to_selection";
const char* const CFGQ_NUIQU_FILTER_LEVEL = "filter_level";
const char* const CFGQ_NUIQU_FILTER_LEVEL_COUNT = "filter_level_count";
const char* const CFGQ_NUIQU_FILTER_PARTITION = "filter_stop_at_partition";
const char* const CFGQ_NUIQU_FILTER_REGISTER = "filter_stop_at_register";

// NUIQ
const char* const CFGQ_NUIQ_CELL_ATTR_SHOW = "Cell_attr_show";
const char* const CFGQ_NUIQ_COLOR_FOLLOW_SYSTEM_THEME = "Follow_system_theme";
const char* const CFGQ_NUIQ_COLOR_THEME = "Color_theme";
const char* const CFGQ_NUIQ_ENABLE_ROLLOVER = "Enable_rollover";
const char* const CFGQ_NUIQ_FILTER_ACROSS_HIERARCHY = "Filter_across_hierarchies";
const char* const CFGQ_NUIQ_FILTER_LEVEL = "Filter_level";
const char* const CFGQ_NUIQ_FILTER_LEVEL_COUNT = "Filter_level_count";
const char* const CFGQ_NUIQ_FILTER_REGISTER = "Filter_stop_at_register";
const char* const CFGQ_NUIQ_FLAT_NET_SHOW = "Flat_net_show";
const char* const CFGQ_NUIQ_LOCATE_INTO_NEW_TAB = "Locate_into_new_tab";
const char* const CFGQ_NUIQ_MAINTAIN_SELECTION = "Maintain_selection";
const char* const CFGQ_NUIQ_NODE_NAME_MAX_LENGTH = "Node_name_max_length";
const char* const CFGQ_NUIQ_NODE_NAME_SHOW_FULL = "Node_name_show_full";
const char* const CFGQ_NUIQ_PIN_NAME_MAX_LENGTH = "Pin_name_max_length";
const char* const CFGQ_NUIQ_PIN_NAME_SHOW_FULL = "Pin_name_show_full";
const char* const CFGQ_NUIQ_PORT_NAME_MAX_LENGTH = "Port_name_max_length";
const char* const CFGQ_NUIQ_PORT_NAME_SHOW_FULL = "Port_name_show_full";
const char* const CFGQ_NUIQ_RIP_ATTR_MAX_LENGTH = "Rip_attr_max_length";
const char* const CFGQ_NUIQ_RIP_ATTR_SHOW_FULL = "Rip_attr_show_full";
const char* const CFGQ_NUIQ_TIMING_ATTR_SHOW = "Timing_attr_show";
const char* const CFGQ_NUIQ_VCONN_ATTR_SHOW = "Vconn_attr_show";

// OFCQ
const char* const CFGQ_OFCQ_AUTO_PLUGIN_SETTINGS = "Auto_plugin_settings";
const char* const CFGQ_OFCQ_CASCADE_MRU_MENUS = "Cascade_MRU_menus";
const char* const CFGQ_OFCQ_CURRENT_DIRECTORY = "Current_directory";
const char* const CFGQ_OFCQ_DEFAULT_DIRECTORY = "Default_directory";
const char* const CFGQ_OFCQ_DEFAULT_LAYOUT_STR = "Layout_and_Preferences";
const char* const CFGQ_OFCQ_DETACH_ON_OPENING = "Detach_on_opening";
const char* const CFGQ_OFCQ_KORVEL_II_LAYOUT_STR = "Korvel_II_layout";
const char* const CFGQ_OFCQ_KORVEL_II_MENU_STR = "Korvel_II_menu";
const char* const CFGQ_OFCQ_LAST_PROJECT_OPEN = "Last_Project_Open";
const char* const CFGQ_OFCQ_LIMIT_TO_SINGLE_INSTANCE = "Limit_to_single_instance";
const char* const CFGQ_OFCQ_MENU_LEFT_STR = "Left";
const char* const CFGQ_OFCQ_MENU_OFF_STR = "Off";
const char* const CFGQ_OFCQ_MENU_RIGHT_STR = "Right";
const char* const CFGQ_OFCQ_MRU_FILES = "MRUFiles";
const char* const CFGQ_OFCQ_MRU_PROJECTS = "MRUProjects";
const char* const CFGQ_OFCQ_NUMBER_MRU_LISTS = "Number_in_MRU_lists";
const char* const CFGQ_OFCQ_PELLUM_LAYOUT_STR = "Pellum_layout";
const char* const CFGQ_OFCQ_PELLUM_MENU_STR = "Pellum_menu";
const char* const CFGQ_OFCQ_PROMPT_TO_ADD_FILES_TO_PROJECT = "Prompt_to_add_files_to_project";
const char* const CFGQ_OFCQ_RELOAD_LAST_PROJECT_WORKSPACE = "Reload_Last_Project_Workspace";
const char* const CFGQ_OFCQ_RELOAD_LAST_WORKSPACE = "ReloadLastWorkspace";
const char* const CFGQ_OFCQ_RELOAD_LAST_WORKSPACE_FILES = "Reload_Last_Workspace_Files";
const char* const CFGQ_OFCQ_RMENU_DELAY_INTERVAL = "Radial_Menu_Delay_Value";
const char* const CFGQ_OFCQ_SAVE_BEFORE_LAUNCH_TASK = "Save_Before_Launch_Task";
const char* const CFGQ_OFCQ_SCREEN_HEIGHT = "Screen_height";
const char* const CFGQ_OFCQ_SCREEN_WIDTH = "Screen_width";
const char* const CFGQ_OFCQ_SHOW_FULLPATH_IN_WINDOW_TITLE = "Show_full_path_in_window_title";
const char* const CFGQ_OFCQ_SHOW_MDI_TABS = "Show_MDI_tabs";
const char* const CFGQ_OFCQ_SHOW_RADIAL_MENU = "Show_Radial_Menu";
const char* const CFGQ_OFCQ_TOOLBAR_LARGE_ICONS = "Large_icons";
const char* const CFGQ_OFCQ_TOOLTIP_DELAY_UNTIL_SHOW_STR = "Tooltip_delay_until_show";
const char* const CFGQ_OFCQ_TOOLTIP_DISPLAY_DURATION_STR = "Tooltip_display_duration";
const char* const CFGQ_OFCQ_TOOLTIP_ENABLE_STR = "Tooltip_enable";
const char* const CFGQ_OFCQ_USER_LIBRARIES = "User_Libraries";

// PGMTQ
const char* const CFGQ_PGMTQ_OJI_PID = "PGMTQ_selected_hardware";
const char* const CFGQ_PGMTQ_AUTO_SIGNED_STR = "Use_MSB_to_fill_in_the_empty_bits_in_tdi_scan";
const char* const CFGQ_PGMTQ_DEFINED_VALUE_STR =
    "Used_to_indicate_whether_the_register_had_been_defined";
const char* const CFGQ_PGMTQ_FLASH_VECTOR_CACHE_STR = "Flash_vector_cache_upon_read_request";

// PGMWQ
const char* const CFGQ_PGMWQ_OJI_PID = "Selected_hardware";
const char* const CFGQ_PGMWQ_AUTO_CHECK_PROGRAM_STR =
    "Automatically_check_Program_Configure_checkbox_when_adding_SOF_file";
const char* const CFGQ_PGMWQ_BACKGROUND_PROGRAMMING_STR = "Background_programming";
const char* const CFGQ_PGMWQ_BITSTREAM_ENCRYPTION_LEGAL_STR =
    "You_acknowledge_that_you_have_read_and_understand_the_disclaimer";
const char* const CFGQ_PGMWQ_CHECKSUM_WITHOUT_USERCODE_STR = "Checksum_without_usercode";
const char* const CFGQ_PGMWQ_CONFIGURE_VOLATILE_SECURITY_KEY_STR =
    "Configure_volatile_security_key";
const char* const CFGQ_PGMWQ_FLASH_FULL_ERASE = "Flash_full_erase";
const char* const CFGQ_PGMWQ_INITIATE_CONFIGURATION_STR = "Initiate_configuration";
const char* const CFGQ_PGMWQ_MSG_BOX_WHEN_DONE_STR = "Show_message_box_when_programming_finishes";
const char* const CFGQ_PGMWQ_PFL_USE_CRC_CHECK_STR = "PFL_verify_flash_content_using_CRC_check";
const char* const CFGQ_PGMWQ_TCK_FREQ_STR = "TCK_frequency";
const char* const CFGQ_PGMWQ_USE_BITSTREAM_COMPRESSION_STR =
    "Use_bitstream_compression_when_available";
const char* const CFGQ_PGMWQ_USE_CONFIG_IO_INSTRUCTION_STR = "Use_CONFIG_IO_instruction";
const char* const CFGQ_PGMWQ_VIEW_INT = "Programmer_window_view";

// PJM
const char* const CFGQ_PJM_AUTO_CLOSE_STATW_AFTER_TASK_END =
    "Automatically_close_STATW_after_task_end";
const char* const CFGQ_PJM_AUTO_OPEN_STATW_BEFORE_TASK =
    "Automatically_open_Status_Window_before_task";
const char* const CFGQ_PJM_AUTO_OPEN_TOOL_WINDOW_BEFORE_TASK =
    "Automatically_open_Tool_window_before_task";
const char* const CFGQ_PJM_CLOSE_WELCOME_SCREEN_AFTER_PROJECT_LOAD =
    "Close_welcome_screen_after_project_load";
const char* const CFGQ_PJM_CORELET_DIRECTORY = "Corelet_IDE_executable_location";
const char* const CFGQ_PJM_DISPLAY_BITMAPS_IN_MENUS = "Display_toolbar_bitmaps_in_menus";
const char* const CFGQ_PJM_SHOW_WELCOME_SCREEN = "Show_welcome_screen";
const char* const CFGQ_PJM_SHOW_WHATSNEW_SCREEN = "Show_whatsnew_screen";

// PPLQ
const char* const CFGQ_PPLQ_ERROR_CHECK_STR = "Pin_planner_error_check";
const char* const CFGQ_PPLQ_IOBANK_COLOR_INTENSITY_STR = "IO_bank_color_intensity";
const char* const CFGQ_PPLQ_MAKE_PAD_ASSIGNMENT_STR = "Make_pad_assignment_in_pad_view";
const char* const CFGQ_PPLQ_SHOW_COLOR_CODING_STR = "Show_Color_Coding";
const char* const CFGQ_PPLQ_SHOW_FITTER_USAGE_STR = "Show_fitter_usage";
const char* const CFGQ_PPLQ_SHOW_NODE_NAMES_STR = "Show_node_names";
const char* const CFGQ_PPLQ_SHOW_PIN_TYPES_STR = "Show_pin_types";
const char* const CFGQ_PPLQ_SHOW_TOP_LEVEL_GROUP_ONLY_STR = "Show_top_level_groups_only";
const char* const CFGQ_PPLQ_SHOW_VIEW_MODE_ICON_STR = "Show_view_mode_icon";
const char* const CFGQ_PPLQ_TOOLTIP_DELAY_UNTIL_SHOW_STR = "Tooltip_delay_until_show";
const char* const CFGQ_PPLQ_TOOLTIP_DISPLAY_DURATION_STR = "Tooltip_display_duration";
const char* const CFGQ_PPLQ_TOOLTIP_ENABLE_STR = "Tooltip_enable";

// REDQ
const char* const CFGQ_REDQ_JTAG_DEVICE_STR = "JTAG_device";
const char* const CFGQ_REDQ_JTAG_FILE_STR = "JTAG_file";
const char* const CFGQ_REDQ_JTAG_HARDWARE_STR = "JTAG_hardware";

// RSMQ
const char* const CFGQ_RSMQ_APPEND_STR = "Append";
const char* const CFGQ_RSMQ_CURRENT_STR = "Current";
const char* const CFGQ_RSMQ_DEFAULT_STR = "Default";
const char* const CFGQ_RSMQ_ENABLE_AUTO_HIGHLIGHT_PREVIOUS_NEXT_NODE =
    "Enable_auto_highlight_previous_next_node";
const char* const CFGQ_RSMQ_EXPAND_LEVEL = "Expand_level";
const char* const CFGQ_RSMQ_EXPAND_LEVEL_COUNT = "Expand_level_count";
const char* const CFGQ_RSMQ_FILTER_BETWEEN_NODES_LEVEL = "Filter_level_between_nodes";
const char* const CFGQ_RSMQ_FILTER_BETWEEN_NODES_LEVEL_COUNT = "Filter_level_between_nodes_count";
const char* const CFGQ_RSMQ_FILTER_LEVEL = "Filter_level";
const char* const CFGQ_RSMQ_FILTER_LEVEL_COUNT = "Filter_level_count";
const char* const CFGQ_RSMQ_FIND_DISPLAY_STR = "Find_and_display_options";
const char* const CFGQ_RSMQ_MAX_ZOOM_LEVEL = "Maximum_zoom_level";
const char* const CFGQ_RSMQ_MIN_ZOOM_LEVEL = "Minimum_zoom_level";
const char* const CFGQ_RSMQ_SHOW_FULL_CONNECTION = "Show_full_connection";
const char* const CFGQ_RSMQ_SHOW_NODE_NAME = "Show_Node_Name";
const char* const CFGQ_RSMQ_SHOW_ROLLOVER = "Show_Rollover";
const char* const CFGQ_RSMQ_TOOLTIP_DELAY_UNTIL_SHOW = "Tooltip_delay_until_show";
const char* const CFGQ_RSMQ_TOOLTIP_DISPLAY_DURATION = "Tooltip_display_duration";
const char* const CFGQ_RSMQ_TOOLTIP_ENABLE_STR = "Tooltip_enable";

// RTLVQ
const char* const CFGQ_RTLVQ_APPEND_STR = "Append";
const char* const CFGQ_RTLVQ_AUTO_HIDE_TEXT_STR = "Auto_Hide_Text";
const char* const CFGQ_RTLVQ_BOX_SELECTION_ON_NET = "Box_selection_on_net";
const char* const CFGQ_RTLVQ_CONSTANT_SIGNAL_FORMAT = "Constant_Signal_Format";
const char* const CFGQ_RTLVQ_CURRENT_PAGE_SELECT_NET = "Select_net_on_current_page";
const char* const CFGQ_RTLVQ_CURRENT_STR = "Current";
const char* const CFGQ_RTLVQ_DEFAULT_STR = "Default";
const char* const CFGQ_RTLVQ_ENABLE_AUTO_EXPAND = "Enable_auto_hierarchy_expansion";
const char* const CFGQ_RTLVQ_ENABLE_TMV_POST_MAP = "Show_TMV_Post-Map";
const char* const CFGQ_RTLVQ_EXPAND_LEVEL = "Expand_level";
const char* const CFGQ_RTLVQ_EXPAND_LEVEL_COUNT = "Expand_level_count";
const char* const CFGQ_RTLVQ_EXPAND_REGISTER = "Expand_stop_at_register";
const char* const CFGQ_RTLVQ_FILTER_ACROSS_HIERARCHY = "Filter_across_hierarchies";
const char* const CFGQ_RTLVQ_FILTER_IN_NEW_VIEW = "Filter_in_new_view";
const char* const CFGQ_RTLVQ_FILTER_LEVEL = "Filter_level";
const char* const CFGQ_RTLVQ_FILTER_LEVEL_COUNT = "Filter_level_count";
const char* const CFGQ_RTLVQ_FILTER_REGISTER = "Filter_stop_at_register";
const char* const CFGQ_RTLVQ_FIND_DISPLAY_STR = "Find_and_display_options";
const char* const CFGQ_RTLVQ_MAINTAIN_ZOOM_LEVEL = "Maintain_Zoom_Level";
const char* const CFGQ_RTLVQ_MAX_ZOOM_LEVEL = "Maximum_zoom_level";
const char* const CFGQ_RTLVQ_MIN_ZOOM_LEVEL = "Minimum_zoom_level";
const char* const CFGQ_RTLVQ_PARTITION_NODE = "Number_of_node_per_page";
const char* const CFGQ_RTLVQ_PARTITION_PORT = "Number_of_port_per_page";
const char* const CFGQ_RTLVQ_SHOW_FULL_CONNECTION = "Show_full_connection";
const char* const CFGQ_RTLVQ_SHOW_GLOBAL_NET = "Show_Global_Net";
const char* const CFGQ_RTLVQ_SHOW_INST_BOX = "Show_Box_Hierarchy";
const char* const CFGQ_RTLVQ_SHOW_NET_NAME = "Show_Net_Name";
const char* const CFGQ_RTLVQ_SHOW_NODE_NAME = "Show_Node_Name";
const char* const CFGQ_RTLVQ_SHOW_ROLLOVER = "Show_Rollover";
const char* const CFGQ_RTLVQ_TOOLTIP_DELAY_UNTIL_SHOW = "Tooltip_delay_until_show";
const char* const CFGQ_RTLVQ_TOOLTIP_DISPLAY_DURATION = "Tooltip_display_duration";
const char* const CFGQ_RTLVQ_TOOLTIP_ENABLE_STR = "Tooltip_enable";

// SEDQ
const char* const CFGQ_SEDQ_ALIGN_LEFT_STR = "Align_names_left";
const char* const CFGQ_SEDQ_AUTO_RECOMPILE_STR = "Automatically_recompile";
const char* const CFGQ_SEDQ_COLUMNPP_STR = "Samples_per_page";
const char* const CFGQ_SEDQ_DISPLAY_MODE_STR = "Display_mode";
const char* const CFGQ_SEDQ_FIT_DATA_STR = "Fit_data_to_page";
const char* const CFGQ_SEDQ_INTER_LINE_SPACING_STR = "Inter-line_spacing";
const char* const CFGQ_SEDQ_LINK_GROUPS_STR = "Link_groups";
const char* const CFGQ_SEDQ_LINK_MNEMONICS_STR = "Link_group_mnemonics";
const char* const CFGQ_SEDQ_LINK_ORDER_STR = "Link_group_order";
const char* const CFGQ_SEDQ_LINK_PROPERTIES_STR = "Link_group_properties";
const char* const CFGQ_SEDQ_MSB_FIRST_STR = "MSB_first";
const char* const CFGQ_SEDQ_NAME_WIDTH_STR = "Max_percent_of_page_for_signal_names";
const char* const CFGQ_SEDQ_NODE_HIERARCHY_DEPTH = "Node_Hierarchy_Depth";
const char* const CFGQ_SEDQ_PAGES_TALL_STR = "Pages_tall";
const char* const CFGQ_SEDQ_PAGES_WIDE_STR = "Pages_wide";
const char* const CFGQ_SEDQ_ROWPP_STR = "Signals_per_page";
const char* const CFGQ_SEDQ_SHOW_ALIAS_STR = "Show_alias";
const char* const CFGQ_SEDQ_SHOW_DUPLICATE_BUTTONS_STR = "Show_duplicate_buttons";
const char* const CFGQ_SEDQ_SHOW_HORZ_GRID_STR = "Show_horizontal_grid";
const char* const CFGQ_SEDQ_SHOW_LEADING_ZEROES_STR = "Show_leading_zeroes";
const char* const CFGQ_SEDQ_SHOW_SYNC_STR = "Show_clock_sync_status";
const char* const CFGQ_SEDQ_SHOW_TAP_STR = "Show tap mode";
const char* const CFGQ_SEDQ_SHOW_TIME_BARS_STR = "Show_time_bars";
const char* const CFGQ_SEDQ_SHOW_TYPE_STR = "Show_type";
const char* const CFGQ_SEDQ_SHOW_VERT_GRID_STR = "Show_time_grid";
const char* const CFGQ_SEDQ_TEMPLATE_DIALOG_DEFAULT_SELECTION = "Default_selection";

// Device lists
const char* const CFGQ_SHOW_ADVANCED_DEVICES = "Show_Advanced_Devices";
const char* const CFGQ_SHOW_AVAILABLE_DEVICE_PACKAGE = "Show_Available_Device_Package";
const char* const CFGQ_SHOW_AVAILABLE_DEVICE_PIN_COUNT = "Show_Available_Device_Pin_Count";
const char* const CFGQ_SHOW_AVAILABLE_DEVICE_SPEED_GRADE = "Show_Available_Device_Speed_Grade";
const char* const CFGQ_SHOW_FIXCAST_COMPATIBLE_ONLY = "Show_FixCast_Compatible_Only";

// TEDQ
const char* const CFGQ_TEDQ_AUTO_DETACH = "auto_detach";
const char* const CFGQ_TEDQ_AUTO_INDENT = "auto_indent";
const char* const CFGQ_TEDQ_ENABLE_CALLTIP = "enable_calltip";
const char* const CFGQ_TEDQ_ENABLE_CLASSIC_FIND_DIALOG = "enable_classic_find_dialog";
const char* const CFGQ_TEDQ_ENABLE_SHOW_ERROR_MARK = "enable_show_error_mark";
const char* const CFGQ_TEDQ_ENABLE_SHOW_HIGHLIGHT_INSTANCES = "enable_highlight_instances";
const char* const CFGQ_TEDQ_INDENT_GUIDE = "show_indentation_guide";
const char* const CFGQ_TEDQ_INSERT_SPACE = "insert_space_for_tab";
const char* const CFGQ_TEDQ_PRINT_COLOR_MODE = "print_color_mode";
const char* const CFGQ_TEDQ_SAVE_BACKUP_FILE = "save_backup_file";
const char* const CFGQ_TEDQ_SHOW_AUTOCOMPLETE_ALL = "enable_autocomplete_all_keywords";
const char* const CFGQ_TEDQ_SHOW_AUTOCOMPLETE_DELIMITERS = "enable_autocomplete_on_deliminiters";
const char* const CFGQ_TEDQ_SHOW_AUTOCOMPLETE_LIST = "show_autocomplete_list";
const char* const CFGQ_TEDQ_SHOW_AUTOCOMPLETE_LOCAL_KEYWORDS =
    "enable_autocomplete_on_local_keywords";
const char* const CFGQ_TEDQ_SHOW_AUTOCOMPLETE_SYNTAX_KEYWORDS =
    "enable_autocomplete_on_syntax_keywords";
const char* const CFGQ_TEDQ_SHOW_LINE_NUMBER = "show_line_number";
const char* const CFGQ_TEDQ_SHOW_NEW_LINE_MARKER = "show_new_line_marker";
const char* const CFGQ_TEDQ_SHOW_WHITE_SPACE = "show_white_space";
const char* const CFGQ_TEDQ_SPLIT_VERTICAL_ORIENTATION = "split_vertical_orientation";
const char* const CFGQ_TEDQ_TAB_SIZE = "tab_size";
const char* const CFGQ_TEDQ_USER_TEMPLATE_LOCATION = "save_template_file_to";

// TFWQ
const char* const CFGQ_TFWQ_DELAY_DELAY_WIDTH_STR = "TFW_delay_delay_width";
const char* const CFGQ_TFWQ_DELAY_SOURCE_WIDTH_STR = "TFW_delay_source_width";
const char* const CFGQ_TFWQ_DELAY_TARGET_WIDTH_STR = "TFW_delay_target_width";
const char* const CFGQ_TFWQ_OPEN_IN_TAB_STR = "TFW_open_in_tab";
const char* const CFGQ_TFWQ_REG_VALUE_WIDTH_STR = "TFW_reg_value_width";
const char* const CFGQ_TFWQ_SHOW_TIME_STR = "TFW_show_time";
const char* const CFGQ_TFWQ_WND_HEIGHT_STR = "TFW_window_height";
const char* const CFGQ_TFWQ_WND_WIDTH_STR = "TFW_window_width";

// WEDQ
const char* const CFGQ_WEDQ_ABSOLUTE_TIME_BARS_STR = "Absolute_time_bars";
const char* const CFGQ_WEDQ_ANALOG_WAVEFORM_DISPLAY_SCALE_STR = "Analog_waveform_display_scale";
const char* const CFGQ_WEDQ_ANALOG_WAVEFORM_DISPLAY_STYLE_STR = "Analog_waveform_display_style";
const char* const CFGQ_WEDQ_CENTER_STR = "Center";
const char* const CFGQ_WEDQ_COMMENTS_STR = "Print_comments";
const char* const CFGQ_WEDQ_DEFAULT_EXTENSION_VALUE_STR = "Extension_default_values";
const char* const CFGQ_WEDQ_DEFAULT_GRID_DUTY_CYCLE_STR = "Default_grid_duty_cycle";
const char* const CFGQ_WEDQ_DEFAULT_GRID_PERIOD_UNITS_STR = "Default_grid_period_unit";
const char* const CFGQ_WEDQ_DEFAULT_GRID_PERIOD_VALUE_STR = "Default_grid_period_value";
const char* const CFGQ_WEDQ_DEFAULT_GRID_PHASE_UNITS_STR = "Default_grid_phase_unit";
const char* const CFGQ_WEDQ_DEFAULT_GRID_PHASE_VALUE_STR = "Default_grid_phase_value";
const char* const CFGQ_WEDQ_DONT_CARE_STR = "Don't_Care_(DC)";
const char* const CFGQ_WEDQ_EXPAND_GROUPS_STR = "Expand_groups_when_printing";
const char* const CFGQ_WEDQ_EXTEND_STR = "Extend";
const char* const CFGQ_WEDQ_EXTEND_USING_DEFAULT_STR = "Extend_using_default_value";
const char* const CFGQ_WEDQ_EXTEND_USING_END_TIME_DLG_STR = "Extend_using_End_Time_dialog";
const char* const CFGQ_WEDQ_FIT_IN_WINDOW_ON_OPEN_STR = "Fit_in_window_on_open";
const char* const CFGQ_WEDQ_FORCING_HIGH_STR = "Forcing_High_(1)";
const char* const CFGQ_WEDQ_FORCING_LOW_STR = "Forcing_Low_(0)";
const char* const CFGQ_WEDQ_FORCING_UNKNOWN_STR = "Forcing_Unknown_(X)";
const char* const CFGQ_WEDQ_GRID_LINES_STR = "Print_grid_lines";
const char* const CFGQ_WEDQ_GROUP_DIALOG_RADIX_USED_STR = "Group_Dialog_Radix";
const char* const CFGQ_WEDQ_GROW_END_TIME_STR = "Grow_End_Time";
const char* const CFGQ_WEDQ_HIGH_IMPEDANCE_STR = "High_Impedance_(Z)";
const char* const CFGQ_WEDQ_INTER_LINE_SPACING_STR = "Interline_spacing";
const char* const CFGQ_WEDQ_LAST_CLK_PATTERN_STR = "Last_clock_pattern";
const char* const CFGQ_WEDQ_LAST_VALUE_STR = "Last_value";
const char* const CFGQ_WEDQ_LEFT_STR = "Left";
const char* const CFGQ_WEDQ_MICROSECONDS_STR = "us";
const char* const CFGQ_WEDQ_MILLISECONDS_STR = "ms";
const char* const CFGQ_WEDQ_MSB_FIRST_STR = "MSB_First";
const char* const CFGQ_WEDQ_NAMES_EVERY_PAGE_STR = "Print_node_names_on_every_page";
const char* const CFGQ_WEDQ_NAMES_PERCENTAGE_STR = "Names_page_percentage";
const char* const CFGQ_WEDQ_NANOSECONDS_STR = "ns";
const char* const CFGQ_WEDQ_NEW_FILE_END_TIME_UNITS_STR = "New_file_end_time_unit";
const char* const CFGQ_WEDQ_NEW_FILE_END_TIME_VALUE_STR = "New_file_end_time_value";
const char* const CFGQ_WEDQ_NODE_NAME_COLUMN_WIDTH = "Node_name_column_width";
const char* const CFGQ_WEDQ_NODE_NAME_JUSTIFY_STR = "Justify_Node_Names";
const char* const CFGQ_WEDQ_NODE_VALUE_JUSTIFY_STR = "Justify_Values";
const char* const CFGQ_WEDQ_PICOSECONDS_STR = "ps";
const char* const CFGQ_WEDQ_PRINT_ROW_HEIGHT_STR = "Default_printing_row_height";
const char* const CFGQ_WEDQ_PROMPT_STR = "Prompt";
const char* const CFGQ_WEDQ_RIGHT_STR = "Right";
const char* const CFGQ_WEDQ_SAVE_WAVEFORM_IN_CVWF_STR = "Save_Waveform_in_CVWF_format";
const char* const CFGQ_WEDQ_SECONDS_STR = "s";
const char* const CFGQ_WEDQ_SHOW_COMMENTS_STR = "Show_comments";
const char* const CFGQ_WEDQ_SHOW_HORZ_GRID_STR = "Show_Horizontal_Grid";
const char* const CFGQ_WEDQ_SHOW_TIME_BARS_STR = "Show_time_bars";
const char* const CFGQ_WEDQ_SHOW_TIME_FIELDS_STR = "Show_time_fields";
const char* const CFGQ_WEDQ_SHOW_VERT_GRID_STR = "Show_Vertical_Grid";
const char* const CFGQ_WEDQ_SNAP_GRID_STR = "Snap_to_Grid";
const char* const CFGQ_WEDQ_SNAP_TRANS_STR = "Snap_to_Transition";
const char* const CFGQ_WEDQ_TIME_BARS_STR = "Print_time_bars";
const char* const CFGQ_WEDQ_TOOLTIP_DELAY_UNTIL_SHOW_STR = "Tooltip_delay_until_show";
const char* const CFGQ_WEDQ_TOOLTIP_DISPLAY_DURATION_STR = "Tooltip_display_duration";
const char* const CFGQ_WEDQ_TRUNCATE_STR = "Truncate";
const char* const CFGQ_WEDQ_UNINITIALIZED_STR = "Uninitialized_(U)";
const char* const CFGQ_WEDQ_WEAK_HIGH_STR = "Weak_High_(H)";
const char* const CFGQ_WEDQ_WEAK_LOW_STR = "Weak_Low_(L)";
const char* const CFGQ_WEDQ_WEAK_UNKNOWN_STR = "Weak_Unknown_(W)";
const char* const CFGQ_WEDQ_WIDTH_STR = "Print_width";

// Other modules, and texts without a module code
const char* const CFGQ_AUTO_OPEN_DASHBOARD_BEFORE_TASK = "Automatically_open_DASHBOARD_before_task";
const char* const CFGQ_CFGDQ_OJI_STR = "CFGDQ_seleceted_hardware";
const char* const CFGQ_CONWQ_COMMAND_HISTORY = "tcl_console_command_history";
const char* const CFGQ_EDA_ENABLE_CROSS_PROBING =
    "Enable_cross-probing_between_Korvel_II_and_other_EDA_tools";
const char* const CFGQ_ELA_COMPILE_BEFORE_TRESCAN = "Compile_before_Trescan";
const char* const CFGQ_FCTGQ_SHOW_INTRO_PAGE = "Show_FixCast_Intro_Page";
const char* const CFGQ_FCTGQ_SHOW_OPTIMIZATION_INTRO_PAGE = "Show_FixCast_Optimization_Intro_Page";
const char* const CFGQ_FIDQ_OJI_PID = "FIDQ_selected_hardware";
const char* const CFGQ_GTFQ_OPEN_GENERATED_FILE_STR = "GTF_open_generated_file";
const char* const CFGQ_HLP_WHATS_NEW_LAST_DISPLAYED_VERSION = "What's_New_Last_Displayed_Version";
const char* const CFGQ_HLP_WINDOW_COORDINATES = "Help_Window_Coordinates";
const char* const CFGQ_IO_BANK_REG_KEY_PREFIX = "IO_BANKS_";
const char* const CFGQ_IP_CATALOG_FILTER_BY_DESCRIPTION = "ipcatalog_filter_by_description";
const char* const CFGQ_IP_CATALOG_SHOW_ALL_IP = "ipcatalog_show_all_ip";
const char* const CFGQ_KISQ_SHOW_TIME_STR = "KIS_show_time";
const char* const CFGQ_MDB_SHOW_UNARCHIVE_SECURITY_PROMPT = "show_unarchive_security_prompt";
const char* const CFGQ_MWPIM_HDL = "mwpim_hdl";
const char* const CFGQ_NA_STR = "NA";
const char* const CFGQ_NO_STR = "No";
const char* const CFGQ_PAGE_SETUP_MARGINS = "page_setup_margins";
const char* const CFGQ_PSETQ_DESIGN_TEMPLATE_DOWNLOAD_PATH = "design_template_download_path";
const char* const CFGQ_PSETQ_USE_PROJECT_RELATIVE_PATH = "use_project_relative_path";
const char* const CFGQ_PTWQ_SHOW_TIME_STR = "PTW_show_time";
const char* const CFGQ_RPWQ_DA_WAIVER_DLG_OWNER_NAME = "user";
const char* const CFGQ_RPWQ_DISABLE_DA_WAIVER_DLG_MSG = "disable_da_waiver_msg";
const char* const CFGQ_SETDQ_ALWAYS_ACCEPT_REC = "SETD_always_accept_rec";
const char* const CFGQ_SETDQ_LAST_OPENED_PAGE = "last_opened_page";
const char* const CFGQ_SFWQ_SHOW_TIME_STR = "SFW_show_time";
const char* const CFGQ_SLDQ_PRINT_COLUMN_PP = "Columns_Per_Page";
const char* const CFGQ_SLDQ_PRINT_ROW_PP = "Rows_Per_Page";
const char* const CFGQ_TMWQ_EXPANDED_NODES = "Task_Manager_Expanded_Nodes";
const char* const CFGQ_TMWQ_FILE = "Task_Manager_File";
const char* const CFGQ_WIZMAN_AUTO_ADD_KIP = "Auto_add_KIP_to_project";
const char* const CFGQ_YES_STR = "Yes";

// ---- Numbered key names ---------------------------------------------------------------------

const char* CFGQ_OFCQ_RADIAL_MENU_ID[8] = {
    "Menu ID 1", "Menu ID 2", "Menu ID 3", "Menu ID 4", "Menu ID 5", "Menu ID 6", "Menu ID 7",
    "Menu ID 8",
};

const char* CFGQ_PJM_TCL[10] = {
    "Tcl_1", "Tcl_2", "Tcl_3", "Tcl_4", "Tcl_5", "Tcl_6", "Tcl_7", "Tcl_8", "Tcl_9", "Tcl_10",
};

const char* CFGQ_FIF_FIND_TARGET[5] = {
    "Find_Target_1", "Find_Target_2", "Find_Target_3", "Find_Target_4", "Find_Target_5",
};

const char* CFGQ_FIF_FIND_LOCATION[5] = {
    "Find_Location_1", "Find_Location_2", "Find_Location_3", "Find_Location_4", "Find_Location_5",
};

const char* CFGQ_RECENTLY_SELECTED_DEVICES[3] = {
    "Recently_selected_devices_1", "Recently_selected_devices_2", "Recently_selected_devices_3",
};

const char* CFGQ_RECENTLY_SELECTED_TOP_LEVEL[5] = {
    "Recently_selected_top-level_1", "Recently_selected_top-level_2",
    "Recently_selected_top-level_3", "Recently_selected_top-level_4",
    "Recently_selected_top-level_5",
};

const char* CFGQ_SHLPQ_KEYWORD_ID[15] = {
    "Keyword1", "Keyword2", "Keyword3", "Keyword4", "Keyword5", "Keyword6", "Keyword7", "Keyword8",
    "Keyword9", "Keyword10", "Keyword11", "Keyword12", "Keyword13", "Keyword14", "Keyword15",
};

// ---- Resizable dialogs --------------------------------------------------------------------
// Entry i of the three arrays belongs to one dialog: its resource identifier and the keys of its
// stored width and height. Entries 0 (holding the count, 23) and 23 (holding 0) frame the list.

const std::uint32_t CFGQ_OFCQ_RESIZING_ID[24] = {
    23, 8111, 6696, 7401, 7402, 6805, 5035, 7722, 9014, 5646, 2852, 4936, 7631, 10560, 10561, 10564,
    10563, 7911, 7912, 8010, 8028, 10261, 11112, 0,
};

const char* CFGQ_OFCQ_RESIZING_CX[24] = {
    "",
    "Settings Dlg CX",
    "Options Dlg CX",
    "Archive Dlg CX",
    "Archive Custom Dlg CX",
    "Insert Template Dlg CX",
    "Insert Symbol Dlg CX",
    "Mnemonic Table Dlg CX",
    "Pin Assignment Dlg CX",
    "Import PELLUM Dlg CX",
    "TCL Scripts DLG CX",
    "FloorPlan CX",
    "FenMark Region CX",
    "Copy Project Dlg CX",
    "Revision Dlg CX",
    "Create Revision Dlg CX",
    "Revision Summary CX",
    "FenMark Add New Node Dlg CX",
    "FenMark Priority Dlg CX",
    "FenMark Path-Based Dlg CX",
    "Non-FenMark Path-Based Dlg CX",
    "TFW Delay tab Add Dlg CX",
    "Design Partition Property Sheet CX",
    "",
};

const char* CFGQ_OFCQ_RESIZING_CY[24] = {
    "",
    "Settings Dlg CY",
    "Options Dlg CY",
    "Archive Dlg CY",
    "Archive Custom Dlg CY",
    "Insert Template Dlg CY",
    "Insert Symbol Dlg CY",
    "Mnemonic Table Dlg CY",
    "Pin Assignment Dlg CY",
    "Import PELLUM Dlg CY",
    "TCL Scripts DLG CY",
    "FloorPlan CY",
    "FenMark Region CY",
    "Copy Project Dlg CY",
    "Revision Dlg CY",
    "Create Revision Dlg CY",
    "Revision Summary CY",
    "FenMark Add New Node Dlg CY",
    "FenMark Priority Dlg CY",
    "FenMark Path-Based Dlg CY",
    "Non-FenMark Path-Based Dlg CY",
    "TFW Delay tab Add Dlg CY",
    "Design Partition Property Sheet CY",
    "",
};
