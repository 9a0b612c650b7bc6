-- soc_self_check.vhd: made by Veldmap from the description of soc.xml. Do not edit.
--
-- Run behind the packages it fails where a package has another number than the description, all of them worked out
-- from the description and not from the text of the packages; it says which:
--
--     ghdl -i $(find . -name '*.vhd') && ghdl -m soc_self_check && ghdl -r soc_self_check
--
-- Not asserted:
--     lines that VHDL refuses, without which --accepted writes packages: 1
--     array types; the ranges of their vectors are: 1

entity soc_self_check is
end entity;

architecture checks of soc_self_check is
begin
  -- soc_reg_pkg.vhd
  process begin
    assert work.soc_reg_pkg.COUNT = 3 report "COUNT must be 3" severity failure;
    assert work.soc_reg_pkg.MINUS = -5 report "MINUS must be -5" severity failure;
    assert work.soc_reg_pkg.span'left = 3 and work.soc_reg_pkg.span'right = 0
      and not work.soc_reg_pkg.span'ascending
      report "span must be 3 downto 0" severity failure;
    assert work.soc_reg_pkg.MODE_OFF = 0 report "MODE_OFF must be 0" severity failure;
    assert work.soc_reg_pkg.MODE_ON = 7 report "MODE_ON must be 7" severity failure;
    assert work.soc_reg_pkg.UART_REG_NBA = 4 report "$UART0: UART_REG_NBA must be 4" severity failure;
    assert work.soc_reg_pkg.at_CTRL = 0 report "$UART0.ctrl: at_CTRL must be 0" severity failure;
    assert work.soc_reg_pkg.l_enable = 0 report "$UART0.ctrl.enable: l_enable must be 0" severity failure;
    assert work.soc_reg_pkg.l_speed'left = 3 and work.soc_reg_pkg.l_speed'right = 1
      and not work.soc_reg_pkg.l_speed'ascending
      report "$UART0.ctrl.speed: l_speed must be 3 downto 1" severity failure;
    assert work.soc_reg_pkg.l_x = 4 report "$UART0.ctrl.x: l_x must be 4" severity failure;
    assert work.soc_reg_pkg.l_y = 6 report "$UART0.ctrl.y: l_y must be 6" severity failure;
    assert work.soc_reg_pkg.l_top = 31 report "$UART0.ctrl.top: l_top must be 31" severity failure;
    assert work.soc_reg_pkg.p_enable = 0 report "$UART0.ctrl.enable: p_enable must be 0" severity failure;
    assert work.soc_reg_pkg.p_speed'left = 3 and work.soc_reg_pkg.p_speed'right = 1
      and not work.soc_reg_pkg.p_speed'ascending
      report "$UART0.ctrl.speed: p_speed must be 3 downto 1" severity failure;
    assert work.soc_reg_pkg.p_x = 4 report "$UART0.ctrl.x: p_x must be 4" severity failure;
    assert work.soc_reg_pkg.p_y = 5 report "$UART0.ctrl.y: p_y must be 5" severity failure;
    assert work.soc_reg_pkg.p_top = 6 report "$UART0.ctrl.top: p_top must be 6" severity failure;
    assert work.soc_reg_pkg.p_g'left = 5 and work.soc_reg_pkg.p_g'right = 4
      and not work.soc_reg_pkg.p_g'ascending
      report "$UART0.ctrl: p_g must be 5 downto 4" severity failure;
    assert work.soc_reg_pkg.range_ctrl'left = 6 and work.soc_reg_pkg.range_ctrl'right = 0
      and not work.soc_reg_pkg.range_ctrl'ascending
      report "$UART0.ctrl: range_ctrl must be 6 downto 0" severity failure;
    assert work.soc_reg_pkg.at_HALF = 3 report "$UART0.half: at_HALF must be 3" severity failure;
    assert work.soc_reg_pkg.l_w'left = 8 and work.soc_reg_pkg.l_w'right = 3
      and not work.soc_reg_pkg.l_w'ascending
      report "$UART0.half.w: l_w must be 8 downto 3" severity failure;
    assert work.soc_reg_pkg.p_w'left = 5 and work.soc_reg_pkg.p_w'right = 0
      and not work.soc_reg_pkg.p_w'ascending
      report "$UART0.half.w: p_w must be 5 downto 0" severity failure;
    assert work.soc_reg_pkg.range_half'left = 5 and work.soc_reg_pkg.range_half'right = 0
      and not work.soc_reg_pkg.range_half'ascending
      report "$UART0.half: range_half must be 5 downto 0" severity failure;
    assert work.soc_reg_pkg.at_CHAN = 4 report "$UART0.chan[0]: at_CHAN must be 4" severity failure;
    assert work.soc_reg_pkg.range_chan'left = 0 and work.soc_reg_pkg.range_chan'right = 0
      and not work.soc_reg_pkg.range_chan'ascending
      report "$UART0.chan[0]: range_chan must be 0 downto 0" severity failure;
    assert work.soc_reg_pkg.at_CHAN_0 = 4 report "$UART0.chan[0]: at_CHAN_0 must be 4" severity failure;
    assert work.soc_reg_pkg.at_CHAN_1 = 5 report "$UART0.chan[1]: at_CHAN_1 must be 5" severity failure;
    assert work.soc_reg_pkg.at_CHAN_2 = 6 report "$UART0.chan[2]: at_CHAN_2 must be 6" severity failure;
    assert work.soc_reg_pkg.tabsize_chan = 3 report "$UART0.chan: tabsize_chan must be 3" severity failure;
    assert work.soc_reg_pkg.at_A = 7 report "$UART0.ch[0].a: at_A must be 7" severity failure;
    assert work.soc_reg_pkg.l_f = 0 report "$UART0.ch[0].a.f: l_f must be 0" severity failure;
    assert work.soc_reg_pkg.p_f = 0 report "$UART0.ch[0].a.f: p_f must be 0" severity failure;
    assert work.soc_reg_pkg.range_a'left = 0 and work.soc_reg_pkg.range_a'right = 0
      and not work.soc_reg_pkg.range_a'ascending
      report "$UART0.ch[0].a: range_a must be 0 downto 0" severity failure;
    assert work.soc_reg_pkg.at_B = 8 report "$UART0.ch[0].b: at_B must be 8" severity failure;
    assert work.soc_reg_pkg.range_b'left = 0 and work.soc_reg_pkg.range_b'right = 0
      and not work.soc_reg_pkg.range_b'ascending
      report "$UART0.ch[0].b: range_b must be 0 downto 0" severity failure;
    wait;
  end process;
  -- sub/lib_reg_pkg.vhd
  process begin
    assert work.lib_reg_pkg.LIB = 2 report "LIB must be 2" severity failure;
    wait;
  end process;
end architecture;
