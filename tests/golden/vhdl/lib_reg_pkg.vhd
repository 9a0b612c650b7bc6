-- ###############################################################
--          sub/lib_reg_pkg.vhd
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


package lib_reg_pkg is

-- Archive Variables
--a
--b
constant BUS_TOP:                               integer := 16#1F#;
constant BUS_TOP:                               integer := 2**(4)+16#F#;

constant VELDMAPSPACER_OWN:                     integer := 1;
subtype Bus is                                  integer range BUS_TOP to 2**(1)-16#1#;
constant OFF:                                   integer := 0;


end lib_reg_pkg;
