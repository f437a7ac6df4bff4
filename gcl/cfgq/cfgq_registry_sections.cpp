// The sections: one row per SUB_KEY (its enumerator's name and its group in a main key), and the
// ranges of the view's enumerations.
// May use: cfgq.
#include "cfgq.h"

const CFGQ_REGISTRY_KEY::ENUMERATED_SUB_KEY_NAME
    CFGQ_REGISTRY_KEY::DEFAULT_SUB_KEYS[CFGQ_REGISTRY_KEY::LAST_SUB_KEY + 1] = {
        {"NO_MAIN_KEY", ""},
        {"NO_SUB_KEY", ""},
        {"GENERAL", "General"},
        {"DIRECTORIES", "Directories"},
        {"GRAPHICS_EDITOR", "Graphics_Editor"},
        {"TEXT_EDITOR", "Text_Editor"},
        {"RECENT_FILES", "Recent_Files"},
        {"SETUP", "Setup"},
        {"TOOLS_MENU", "Tools_Menu"},
        {"CUIQ", "CUIQ"},
        {"UNB", "UNB"},
        {"FLP", "Floorplanner"},
        {"LFP", "Logical_Floorplan"},
        {"ACV", "Chip_Viewer"},
        {"APE", "Atom_Property_Editor"},
        {"PROJECT_MANAGER", "Project_Manager"},
        {"MEMORY_EDITOR", "Memory_Editor"},
        {"PCL", "PCL"},
        {"PJN", "PJN"},
        {"WED", "WED"},
        {"DBU", "DBU"},
        {"LIST_CONTROLS", "List_Control_Widths"},
        {"EDA", "EDA_Tools"},
        {"RPWQ", "Report_Window"},
        {"KORVEL_MURMEL", "Korvel_Murmel"},
        {"SLD", "SLD"},
        {"TCL", "Tcl_Toolbar"},
        {"ASEQ", "Assignment_Editor"},
        {"FMW", "FenMark_Regions_Window"},
        {"PROGRAMMER", "Programmer"},
        {"FIF", "Find_in_Files"},
        {"SED", "Trescan"},
        {"ISMCE", "In-System_Memory_Content_Editor"},
        {"ASD_BACK_ANNOTATE", "Back_Annotate_Dialog"},
        {"SETD", "Settings_Dialog"},
        {"TOOL_WND", "TOOL_WND"},
        {"RESIZE", "Resizable_Window"},
        {"DCS", "Dialog_Control_State"},
        {"RTLV", "RTL_Viewer"},
        {"RSMQ", "State_Machine_Viewer"},
        {"MSG", "Messages"},
        {"PPLQ", "Pin_Planner"},
        {"CPS", "Critical_Path_Settings"},
        {"WIZARDS", "Wizards"},
        {"REVISION", "Revisions_Dialog"},
        {"DPW", "DPW"},
        {"TAWQ", "Horvane_Timing_Analyzer"},
        {"OAW", "Advisors"},
        {"SDE", "Simulation_Debugger"},
        {"TMW", "Task_Manager_Window"},
        {"CFWQ", "Compiler_Flow_Window"},
        {"OFCQ", "Orlesk_Foundation_Class"},
        {"KGQ", "Korvel"},
        {"KUI", "Korvel_UI_Framework"},
        {"ECO", "Change Manager Window"},
        {"ESLC", "EDA_Simulation_Library_Compiler"},
        {"CSETQ", "Device_Dialog"},
        {"SHLPQ", "Self_Help"},
        {"TOOLBAR", "Toolbar"},
        {"NUI", "NUI_Viewer"},
        {"DEPLG", "Design_Planner"},
        {"CMPM", "Compiler_Manager"},
        {"PDPW", "Draftwell"},
        {"NUIQU", "RTL_Analyzer"},
        {"KCOLOR", "Korvel_Color_Setting"},
        {"KINST", "Korvel_Installer"},
        {"DEEQ", "Design_Entry_Editor"},
        {"PTCGUI", "Power_and_Thermal_Analyzer"},
        {"LAST_SUB_KEY", ""},
};

const CFGQ_REGISTRY_KEY::SUB_KEY_ITERATOR CFGQ_REGISTRY_KEY::SUB_KEY_BEGIN() {
  return {NO_MAIN_KEY, false};
}

const CFGQ_REGISTRY_KEY::SUB_KEY_ITERATOR CFGQ_REGISTRY_KEY::SUB_KEY_END() {
  return {LAST_SUB_KEY, true};
}

const CFGQ_REGISTRY_KEY::REGISTRY_ERROR_CODE_ITERATOR
CFGQ_REGISTRY_KEY::REGISTRY_ERROR_CODE_BEGIN() {
  return {REGISTRY_NO_ERROR, false};
}

const CFGQ_REGISTRY_KEY::REGISTRY_ERROR_CODE_ITERATOR CFGQ_REGISTRY_KEY::REGISTRY_ERROR_CODE_END() {
  return {REGISTRY_VALUE_NOT_FOUND, true};
}
