-- ###############################################################
--          soc_regs.vhd
-- ###############################################################
-- Generated automatically by Veldspector
--
-- Module Description :
--
--      
--
-- ---------------------------------------------------------------
--  $HeadURL: $
--  $Author: $
--  $Date: $
--  $Revision: $
-- ---------------------------------------------------------------
-- ###############################################################
--          VHDL CODE
-- ###############################################################
-------------------------------------------------
-- Libraries
-------------------------------------------------
LIBRARY IEEE;
USE ieee.std_logic_1164.all;

USE work.lib_reg_pkg.all;

package soc_regs is

-- Archive Variables

-- Register definition
-- Register Map
-- Address bit for register decoding
constant M_REG_NBA: integer range 1 to 12 := 1;

-- Registers are defined by
--  * an address :          at_REG_NAME
--  * a logical map :       constant or ranges for each field l_Field_Name
--  * a physical map :      constant or ranges for each field p_Field_Name
--  * a physical range :    range_Reg_Name

    constant at_R:                              integer := 0;
        -- logical map
        subtype  l_f is                                 integer range BUS_TOP downto 0;
        -- physical map
        subtype  p_f is                                 integer range BUS_TOP downto 0;
        subtype range_r is                      integer range BUS_TOP downto 0;

    constant at_Q:                              integer := 1;
        -- logical map
        constant l_f:                                   integer := 1;
        -- physical map
        constant p_f:                                   integer := 0;
        subtype range_q is                      integer range 0 downto 0;

-- Register definition
-- Register Map
-- Address bit for register decoding
constant N_REG_NBA: integer range 1 to 12 := 0;

-- Registers are defined by
--  * an address :          at_REG_NAME
--  * a logical map :       constant or ranges for each field l_Field_Name
--  * a physical map :      constant or ranges for each field p_Field_Name
--  * a physical range :    range_Reg_Name

        constant at_R2:                         integer := 0;
            -- logical map
            constant l_f:                                   integer := 1;
            -- physical map
            constant p_f:                                   integer := 0;
            subtype range_r2 is                 integer range 0 downto 0;


end soc_regs;
