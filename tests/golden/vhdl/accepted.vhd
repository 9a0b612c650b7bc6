-- ###############################################################
--          soc_reg_pkg.vhd
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

USE work.a_reg_pkg.all;
--USE work.a_reg_pkg.all; -- refused: it uses a_reg_pkg, which is refused
--USE work.entity.all; -- refused: the name is reserved or no identifier

package soc_reg_pkg is

-- Archive Variables
--constant BIG:                                   integer := 16#80000000#; -- refused: a number lies beyond the integers of VHDL
--constant SMALL:                                 integer := BIG-16#7FFFFFFF#; -- refused: it uses BIG, which is refused
constant A:                                     integer := 1;
--constant A:                                     integer := 2; -- refused: the name is declared already
--constant OF_A:                                  integer := A; -- refused: it uses A, which is refused
--constant OTHER:                                 integer := C; -- refused: it uses C, which is refused
-- VHDL-93 lacks characters of this comment: a ? stands for each
--?
--two
--constant SHIFT:                                 integer := 1<<4; -- refused: VHDL can't read the expression
--subtype signal is                               integer range 3 downto 0; -- refused: the name is reserved or no identifier
--subtype span is                                 integer range WIDTH downto SHIFT-16; -- refused: it uses SHIFT, which is refused

-- Register definition
-- Register Map
-- Address bit for register decoding
constant M_REG_NBA: integer range 1 to 12 := 2;

-- Registers are defined by
--  * an address :          at_REG_NAME
--  * a logical map :       constant or ranges for each field l_Field_Name
--  * a physical map :      constant or ranges for each field p_Field_Name
--  * a physical range :    range_Reg_Name

    constant at_C:                              integer := 0;
        -- logical map
        subtype  l_f is                                 integer range WIDTH downto 0;
--        constant l_g:                                   integer := SHIFT; -- refused: it uses SHIFT, which is refused
        -- physical map
        subtype  p_f is                                 integer range WIDTH downto 0;
        constant p_g:                                   integer := WIDTH+1;
        subtype range_c is                      integer range WIDTH+1 downto 0;

    constant at_R:                              integer := 1;
        -- logical map
        -- physical map
--        subtype range_r is                      integer range  downto 0; -- refused: the register has no bitfields

    constant at_R_0:                            integer := 1;
    constant at_R_1:                            integer := 2;

        constant tabsize_r:                     integer := 2;
--        type tab_r is array (NATURAL range <>) of std_logic_vector(range_r); -- refused: it uses range_r, which is refused

--    constant at_C:                              integer := 3; -- refused: the name is declared already
        -- logical map
--        constant l_f:                                   integer := 6; -- refused: the name is declared already
        -- physical map
--        constant p_f:                                   integer := 0; -- refused: the name is declared already
--        subtype range_C is                      integer range 0 downto 0; -- refused: the name is declared already

-- Register definition
-- Register Map
-- Address bit for register decoding
constant N_REG_NBA: integer range 1 to 12 := 1;

-- Registers are defined by
--  * an address :          at_REG_NAME
--  * a logical map :       constant or ranges for each field l_Field_Name
--  * a physical map :      constant or ranges for each field p_Field_Name
--  * a physical range :    range_Reg_Name

--    constant at_C:                              integer := 0; -- refused: the name is declared already
        -- logical map
--        subtype  l_f is                                 integer range 5 downto 4; -- refused: the name is declared already
        -- physical map
--        subtype  p_f is                                 integer range 1 downto 0; -- refused: the name is declared already
--        subtype range_c is                      integer range 1 downto 0; -- refused: the name is declared already

    constant at_C_0:                            integer := 0;
    constant at_C_1:                            integer := 1;

        constant tabsize_c:                     integer := 2;
--        type tab_c is array (NATURAL range <>) of std_logic_vector(range_c); -- refused: it uses range_c, which is refused


end soc_reg_pkg;
